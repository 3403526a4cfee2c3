#include "FileRefRegistry.h"

#include "LibraryTags.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "StringUtilities.h"
#include "UserPaths.h"

#include <algorithm>

FileRefRegistry::FileRefRegistry(const PIFileRef::Environment &environment)
    : m_environment(environment)
{}

std::shared_ptr<PIFileRef> FileRefRegistry::fileRefForPath(const QString &path)
{
    if (auto existing = fileRefForPathIfExists(path))
        return existing;
    auto ref = std::make_shared<PIFileRef>(path, m_environment);
    add(path, ref);
    return ref;
}

std::shared_ptr<PIFileRef> FileRefRegistry::fileRefForPathIfExists(const QString &path) const
{
    m_byPath.reserve(m_entries.size());
    for (; m_indexedByPath < m_entries.size(); ++m_indexedByPath)
        indexPath(m_indexedByPath);
    const auto found = m_byPath.constFind(path);
    return found == m_byPath.cend() ? nullptr : m_entries.at(*found).ref;
}

namespace {

bool isThere(const PIFileRef &ref, const QString &path)
{
    return !ref.isFileLost() && ref.path() == path;
}

}

/// Of two entries with one key the later one counts, unless only the earlier one's file is there.
void FileRefRegistry::indexPath(qsizetype at) const
{
    const Entry &entry = m_entries.at(at);
    if (entry.key.isEmpty())
        return;
    const qsizetype before = m_byPath.size();
    qsizetype &place = m_byPath[entry.key];
    if (m_byPath.size() > before || isThere(*entry.ref, entry.key) || !isThere(*m_entries.at(place).ref, entry.key))
        place = at;
}

std::shared_ptr<PIFileRef> FileRefRegistry::fileRefForGuid(const QString &guid) const
{
    m_byGuid.reserve(m_entries.size());
    for (; m_indexedByGuid < m_entries.size(); ++m_indexedByGuid) {
        const QString &newGuid = m_entries.at(m_indexedByGuid).ref->guid();
        if (!m_byGuid.contains(newGuid))
            m_byGuid.insert(newGuid, m_indexedByGuid);
    }
    const auto found = m_byGuid.constFind(guid);
    return found == m_byGuid.cend() ? nullptr : m_entries.at(*found).ref;
}

QStringList FileRefRegistry::knownPaths() const
{
    QStringList paths;
    paths.reserve(m_entries.size());
    for (const Entry &entry : m_entries) {
        if (entry.key.isEmpty())
            continue;
        paths.append(entry.key);
        if (entry.ref->path() != entry.key)
            paths.append(entry.ref->path());
    }
    return paths;
}

void FileRefRegistry::takeUpPaths(const QSet<const PIFileRef *> &refs)
{
    enterAnew(refs, [](const PIFileRef &ref) { return ref.path(); });
}

void FileRefRegistry::dropPaths(const QSet<const PIFileRef *> &refs)
{
    enterAnew(refs, [](const PIFileRef &) { return QString(); });
}

template<typename KeyOf>
void FileRefRegistry::enterAnew(const QSet<const PIFileRef *> &refs, const KeyOf &keyOf)
{
    bool isChanged = false;
    for (Entry &entry : m_entries) {
        if (refs.isEmpty() || !refs.contains(entry.ref.get()))
            continue;
        const QString key = keyOf(*entry.ref);
        isChanged |= key != entry.key;
        entry.key = key;
    }
    if (!isChanged)
        return;
    m_byPath.clear();
    m_indexedByPath = 0;
}

void FileRefRegistry::clearSaveIndexes()
{
    for (const Entry &entry : m_entries)
        entry.ref->clearSaveIndex();
}

void FileRefRegistry::add(const QString &key, const std::shared_ptr<PIFileRef> &ref)
{
    m_entries.append({key, ref});
}

namespace {

// The folders in the order in which they were first seen.
class FolderList
{
public:
    /// The place of the folder in which the file stands. Files of one folder mostly come one after the other.
    quint64 placeOfFolderOf(const QString &path)
    {
        const qsizetype nameStart = path.lastIndexOf(u'/') + 1;
        const bool isSame =
            nameStart > 1 && nameStart < path.size() && QStringView(path).first(nameStart) == m_lastStart;
        if (!isSame) {
            m_last = place(QVString::deletingLastPathComponent(path));
            m_lastStart = path.left(nameStart);
        }
        return m_last;
    }
    const QStringList &folders() const { return m_folders; }

private:
    quint64 place(const QString &folder)
    {
        const auto known = m_places.constFind(folder);
        if (known != m_places.cend())
            return *known;
        m_folders.append(folder);
        return *m_places.insert(folder, static_cast<quint64>(m_folders.size() - 1));
    }

    QStringList m_folders;
    QHash<QString, quint64> m_places;
    QString m_lastStart; // with the slash at its end
    quint64 m_last = 0;
};

QString storedFolder(const QString &folder)
{
    const QString shortened = QVString::abbreviateHomeFolderPath(folder);
    if (shortened == folder && folder.startsWith(RootPath(), Qt::CaseInsensitive))
        return folder.mid(RootPath().size());
    return shortened;
}

void writeFolders(QVXmlEncoder &encoder, const QStringList &folders)
{
    encoder.openTag("folders");
    for (qsizetype i = 0; i < folders.size(); ++i) {
        encoder.addAttribute("seq", static_cast<quint64>(i));
        encoder.addAttribute("path", storedFolder(folders.at(i)));
        encoder.openAndCloseTag("folder");
    }
    encoder.closeTag("folders");
}

}

void FileRefRegistry::saveFileRefs(QVXmlEncoder &encoder) const
{
    if (m_entries.isEmpty())
        return;
    FolderList folders;
    QList<const PIFileRef *> used;
    for (const Entry &entry : m_entries) {
        if (!entry.key.isEmpty())
            (void)folders.placeOfFolderOf(entry.key);
        if (entry.ref->saveIndex() != kNotFound)
            used.append(entry.ref.get());
    }
    // A file may have moved into a folder in which no key lies.
    for (const PIFileRef *ref : used)
        (void)folders.placeOfFolderOf(ref->path());
    std::stable_sort(used.begin(), used.end(),
                     [](const PIFileRef *a, const PIFileRef *b) { return a->saveIndex() < b->saveIndex(); });
    encoder.openTag("files");
    writeFolders(encoder, folders.folders());
    encoder.openTag("refs");
    for (const PIFileRef *ref : used)
        ref->archiveToXml(encoder, folders.placeOfFolderOf(ref->path()));
    encoder.closeTag("refs");
    encoder.closeTag("files");
}

namespace {

// The reverse of the text test that shortens: "~adow" is the folder "meadow" beside the home folder "me". No path
// depends on the folder in which the program was started.
QString folderFromStored(const QString &stored)
{
    if (stored.startsWith(u'~'))
        return HomeFolderPath() + stored.mid(1);
    return stored.startsWith(u'/') ? stored : u'/' + stored;
}

// A closing tag reads like an element without attributes: one that is no leaf must not be counted twice.
bool skipChildren(QVXmlDecoder &decoder)
{
    return decoder.readChildren([] { return true; });
}

}

bool FileRefRegistry::readFileRefs(QVXmlDecoder &decoder, QList<std::shared_ptr<PIFileRef>> &orderedArray)
{
    QStringList folders;
    const auto readFolder = [&] {
        if (decoder.key() != LibraryTag::Folder)
            return true;
        folders.append(folderFromStored(decoder.stringAttributeForTag(u"path")));
        return skipChildren(decoder);
    };
    const auto readRef = [&] {
        if (decoder.key() != LibraryTag::Ref)
            return true;
        const auto ref = PIFileRef::fromArchive(decoder, folders, m_environment);
        if (!ref)
            return false;
        add(ref->path(), ref);
        orderedArray.append(ref);
        return skipChildren(decoder);
    };
    return decoder.readChildren([&] {
        if (decoder.key() == LibraryTag::Folders)
            return decoder.readChildren(readFolder);
        if (decoder.key() == LibraryTag::Refs)
            return decoder.readChildren(readRef);
        return true;
    });
}
