#include "KnownFiles.h"

#include <QFile>
#include <QStringEncoder>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace {

quint32 hashOf(std::string_view name)
{
    return static_cast<quint32>(std::hash<std::string_view>{}(name));
}

/// Where the path below one of the roots begins; 0 when it stands beneath none.
qsizetype startOfRelative(const QList<QByteArray> &roots, const QByteArray &path)
{
    for (const QByteArray &root : roots) {
        const qsizetype slash = root.endsWith('/') ? root.size() - 1 : root.size();
        if (!root.isEmpty() && path.size() > slash && path.at(slash) == '/' && path.startsWith(root))
            return slash + 1;
    }
    return 0;
}

}

void KnownFiles::Names::add(std::string_view name, quint32 place)
{
    constexpr std::size_t kSmallest = 16;
    if (2 * (m_count + 1) > m_slots.size()) {
        const std::vector<Slot> old =
            std::exchange(m_slots, std::vector<Slot>(std::max(kSmallest, 2 * m_slots.size())));
        for (const Slot &slot : old)
            if (slot.place)
                insert(slot);
    }
    insert({hashOf(name), place});
    ++m_count;
}

void KnownFiles::Names::insert(Slot slot)
{
    std::size_t at = slot.hash & (m_slots.size() - 1);
    while (m_slots[at].place)
        at = (at + 1) & (m_slots.size() - 1);
    m_slots[at] = slot;
}

bool KnownFiles::Names::contains(std::string_view name, const char *bytes) const
{
    const quint32 hash = hashOf(name);
    for (std::size_t at = hash & (m_slots.size() - 1); m_slots[at].place; at = (at + 1) & (m_slots.size() - 1))
        if (m_slots[at].hash == hash && std::strcmp(bytes + m_slots[at].place, name.data()) == 0)
            return true;
    return false;
}

KnownFiles::KnownFiles(const QStringList &paths, const QList<QByteArray> &roots)
{
    QStringView lastFolder;
    Names *names = nullptr;
    m_bytes.reserve(32 * paths.size());
    for (const QString &path : paths) {
        const qsizetype slash = path.lastIndexOf(u'/');
        const QStringView folder = QStringView(path).first(slash + 1);
        // Neighbours in a library mostly share their folder.
        if (folder != lastFolder) {
            lastFolder = folder;
            names = namesIn(roots, QFile::encodeName(folder.toString()));
        }
        if (names)
            addName(*names, QStringView(path).sliced(slash + 1));
    }
}

/// Null when the folder does not stand beneath any of the roots.
KnownFiles::Names *KnownFiles::namesIn(const QList<QByteArray> &roots, const QByteArray &folder)
{
    const qsizetype start = startOfRelative(roots, folder);
    return start > 0 ? &m_folders[folder.sliced(start, std::max(folder.size() - start - 1, qsizetype(0)))] : nullptr;
}

void KnownFiles::addName(Names &names, QStringView name)
{
    QStringEncoder encoder(QStringEncoder::Utf8);
    const qsizetype place = m_bytes.size();
    const qsizetype most = encoder.requiredSpace(name.size()) + 1;
    if (place + most > std::numeric_limits<qint32>::max())
        return;
    m_bytes.resize(place + most);
    char *end = encoder.appendToBuffer(m_bytes.data() + place, name);
    *end = '\0';
    m_bytes.resize(end + 1 - m_bytes.constData());
    names.add({m_bytes.constData() + place, static_cast<std::size_t>(m_bytes.size() - place - 1)},
              static_cast<quint32>(place));
}

KnownFiles::Folder KnownFiles::folder(const QByteArray &relativePath) const
{
    Folder folder;
    if (const auto found = m_folders.constFind(relativePath); found != m_folders.cend())
        folder.m_names = &*found;
    folder.m_bytes = m_bytes.constData();
    return folder;
}
