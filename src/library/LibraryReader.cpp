#include "LibraryReader.h"

#include "FileFinder.h"
#include "LibraryTags.h"
#include "PhotoLibrary.h"
#include "QVXmlDecoder.h"

namespace {

QString corruptText()
{
    return QStringLiteral("The database contents have been corrupted.");
}

}

QString LibraryReader::read()
{
    if (!m_decoder.getNextTag() || m_decoder.key() != LibraryTag::Root)
        return corruptText();
    if (m_decoder.integerAttributeForTag(u"version") != 0)
        return QStringLiteral("The database was created by a leter version of Tamsel Photo. Please go to our website "
                              "for an update.");
    bool more = m_decoder.getNextTag();
    while (more && m_decoder.level() >= 1) {
        if (!readSection())
            return corruptText();
        more = m_decoder.getNextTag();
    }
    const bool closed = m_decoder.level() < 1 || (m_decoder.key() == LibraryTag::Root && m_decoder.endTag());
    m_result.cutShort = !closed || !m_decoder.error().isEmpty();
    WindowRestoreRecord &restore = m_result.restore;
    if (restore.photoIndex >= 0 && restore.photoIndex < m_photos.size())
        restore.photo = m_photos.at(restore.photoIndex);
    return {};
}

bool LibraryReader::readSection()
{
    switch (m_decoder.key()) {
    case LibraryTag::Files:
        return readFiles();
    case LibraryTag::Keys:
        return readKeywords();
    case LibraryTag::Photos:
        return readPhotos();
    case LibraryTag::Structure:
        return readStructure();
    case LibraryTag::Window:
        return readWindow();
    case LibraryTag::Effects:
        return readEffects();
    default:
        return true;
    }
}

/// Goes on to the tag that closes an element of that level.
bool LibraryReader::leaveElement(int level)
{
    while (m_decoder.level() >= level) {
        if (!m_decoder.getNextTag())
            return false;
    }
    return true;
}

bool LibraryReader::readFiles()
{
    if (!m_library.fileRefs().readFileRefs(m_decoder, m_fileRefs))
        return false;
    QStringList guids;
    guids.reserve(m_fileRefs.size());
    for (const auto &fileRef : std::as_const(m_fileRefs))
        guids.append(fileRef->guid());
    m_library.fileFinder().trimUnusedFiles(guids);
    return true;
}

bool LibraryReader::readKeywords()
{
    return m_decoder.readChildren([this] {
        if (m_decoder.key() != LibraryTag::Key)
            return true;
        m_library.keywords().append(m_decoder.stringAttributeForTag(u"keyword"));
        return m_decoder.endTag() || leaveElement(m_decoder.level());
    });
}

bool LibraryReader::readPhotos()
{
    return m_decoder.readChildren([this] {
        if (m_decoder.key() != LibraryTag::Photo)
            return true;
        auto photo = PIPhoto::fromArchive(m_decoder, m_fileRefs);
        if (!photo)
            return false;
        m_result.photoGuids.append(photo->guid());
        m_photos.append(std::move(photo));
        return true;
    });
}

bool LibraryReader::readStructure()
{
    return m_decoder.readChildren([this] {
        if (m_decoder.key() != LibraryTag::Group)
            return false;
        auto group = PIGroup::fromArchive(m_decoder, m_photos, m_result.restore);
        if (!group)
            return false;
        m_library.groups().append(std::move(group));
        return true;
    });
}

bool LibraryReader::readWindow()
{
    WindowRestoreRecord &restore = m_result.restore;
    // Where the document ends is for the outer loop to find.
    (void)m_decoder.readChildren([&] {
        if (m_decoder.key() == LibraryTag::Folder)
            restore.folderNumber = m_decoder.integerValue();
        else if (m_decoder.key() == LibraryTag::Photo)
            restore.photoIndex = m_decoder.integerValue();
        else if (m_decoder.key() == LibraryTag::Selection)
            restore.selection = IndexSet::fromArchive(m_decoder.value());
        return true;
    });
    return true;
}

/// The last section: whatever follows the effect sets is read and ignored.
bool LibraryReader::readEffects()
{
    while (m_decoder.getNextTag() && m_decoder.key() == LibraryTag::Effect) {
        const int level = m_decoder.level();
        const QString name = m_decoder.stringAttributeForTag(u"name");
        if (!m_decoder.getNextTag() || m_decoder.key() != LibraryTag::Filters)
            break;
        if (const auto chain = UnarchiveFilters(m_decoder))
            m_library.effectSets().insert(name, *chain);
        if (!leaveElement(level))
            break;
    }
    while (m_decoder.getNextTag()) {
    }
    return true;
}
