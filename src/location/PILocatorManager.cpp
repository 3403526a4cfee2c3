#include "PILocatorManager.h"

#include "FileWriter.h"
#include "LogString.h"
#include "PosixSupport.h"
#include "PropertyList.h"
#include "StringUtilities.h"
#include "UniqueFileName.h"

#include <QDateTime>
#include <QSet>

#include <sys/stat.h>

#include <algorithm>

namespace {

bool exists(const QString &path)
{
    struct stat facts = {};
    return ::lstat(Posix::nativePath(path).constData(), &facts) == 0;
}

FileTime dateOf(const QString &path)
{
    const auto file = examineLinkedFile(Posix::nativePath(path).constData());
    return file ? file->identity.modified : FileTime{QDateTime::currentSecsSinceEpoch(), 0};
}

}

PILocatorManager::PILocatorManager(const QString &folder)
    : m_folder(folder)
    , m_plistPath(QVString::appendingPathComponent(folder, QStringLiteral("locators.plist")))
    , m_databasePath(QVString::appendingPathComponent(folder, QStringLiteral("locators.database")))
{}

std::unique_ptr<PILocatorManager> PILocatorManager::open(const QString &folder)
{
    std::unique_ptr<PILocatorManager> manager(new PILocatorManager(folder));
    const bool hasList = exists(manager->m_plistPath);
    manager->m_lastStored = dateOf(manager->m_plistPath);
    const auto list = hasList ? PropertyList::read(manager->m_plistPath) : std::nullopt;
    manager->m_isListDamaged = hasList && (!list || list->typeId() != QMetaType::QVariantHash);
    if (manager->m_isListDamaged)
        LogString("Can't read locator GUID map at %@", manager->m_plistPath);
    if (!manager->m_file.open(manager->m_databasePath))
        return nullptr;
    manager->m_sequenceID = manager->m_file.sequenceID();
    if (list)
        manager->m_map = LocatorMap::fromPropertyList(*list, manager->m_file.length()).value_or(LocatorMap());
    return manager;
}

std::optional<QVFileLocator> PILocatorManager::locatorForGuid(const QString &guid) const
{
    const quint32 offset = m_file.isOpen() ? m_map.offsets.value(guid, 0) : 0;
    if (offset == 0)
        return {};
    QByteArray room;
    const auto data = m_file.dataAt(offset, room);
    return data ? QVFileLocator::fromBinaryArchive(*data) : std::nullopt;
}

LocatorSnapshot PILocatorManager::snapshot() const
{
    return m_file.isOpen() ? LocatorSnapshot{m_databasePath, m_map.offsets} : LocatorSnapshot();
}

QStringList LocatorSnapshot::guidsBut(const QStringList &guidsInUse) const
{
    const QSet<QString> used(guidsInUse.cbegin(), guidsInUse.cend());
    QStringList unused;
    for (auto entry = offsets.keyBegin(); entry != offsets.keyEnd(); ++entry)
        if (!used.contains(*entry))
            unused.append(*entry);
    return unused;
}

LocatorSnapshot::Reader::Reader(const LocatorSnapshot &snapshot, Reads reads)
    : m_snapshot(snapshot)
{
    if (!snapshot.offsets.isEmpty() && m_file.open(snapshot.databasePath) && reads == Reads::Many)
        m_file.keepInMemory();
}

std::optional<QVFileLocator> LocatorSnapshot::Reader::locatorForGuid(const QString &guid) const
{
    const quint32 offset = m_file.isOpen() ? m_snapshot.offsets.value(guid, 0) : 0;
    QByteArray room;
    const auto data = offset != 0 ? m_file.dataAt(offset, room) : std::nullopt;
    return data ? QVFileLocator::fromBinaryArchive(*data) : std::nullopt;
}

/// Where a locator is to be written, and which blocks change hands by that.
struct PILocatorManager::Allocation
{
    quint64 offset = 0;
    LocatorBlock block = {};
    std::optional<FreeBlockList::Block> released = {}; ///< the former block of the guid
    std::optional<FreeBlockList::Block> reused = {};
};

bool PILocatorManager::setLocator(const QVFileLocator &locator, const QString &guid)
{
    const QByteArray data = locator.createBinaryArchive();
    if (!m_file.isOpen() || !LocatorMap::isGuid(guid) || data.size() > qsizetype(LocatorBlock::kMaxLength)) {
        LogString("Can't store the locator of %@ for %@", locator.path(), guid);
        return false;
    }
    quint32 &place = m_map.offsets[guid]; // 0 when it is new
    const Allocation allocation = allocateBlock(static_cast<quint32>(data.size()), place);
    // Only what is written changes the map: after a failure the guid keeps what it had.
    if (!m_file.write(allocation.offset, allocation.block, data)) {
        LogString("Can't write locator database: %d", errno);
        if (place == 0)
            m_map.offsets.remove(guid);
        return false;
    }
    place = static_cast<quint32>(allocation.offset);
    if (allocation.released)
        m_map.freeBlocks.append(*allocation.released);
    if (allocation.reused)
        m_map.freeBlocks.remove(*allocation.reused);
    m_dirty = true;
    return true;
}

/// A list that is older than its database, or damaged, may tell of free blocks that are none: those are dropped.
std::optional<FreeBlockList::Block> PILocatorManager::freeBlockFor(quint32 length)
{
    while (const auto block = m_map.freeBlocks.find(length, m_sequenceID)) {
        const auto present = m_file.blockAt(block->offset);
        if (present && present->capacity == block->capacity)
            return block;
        m_map.freeBlocks.remove(*block);
    }
    return {};
}

PILocatorManager::Allocation PILocatorManager::allocateBlock(quint32 length, quint32 present)
{
    Allocation allocation;
    if (const auto block = present != 0 ? m_file.blockAt(present) : std::nullopt) {
        if (block->capacity >= length)
            return {.offset = present, .block = {block->capacity, length}};
        allocation.released = FreeBlockList::Block{present, block->capacity, m_sequenceID};
    }
    allocation.reused = freeBlockFor(length);
    allocation.offset = allocation.reused ? allocation.reused->offset : m_file.length();
    allocation.block = {allocation.reused ? allocation.reused->capacity : length, length};
    return allocation;
}

void PILocatorManager::trimUnusedFiles(const QStringList &guidsInUse)
{
    forget(snapshot().guidsBut(guidsInUse));
}

void PILocatorManager::forget(const QStringList &guids)
{
    QList<quint32> unused;
    for (const QString &guid : guids)
        if (const quint32 offset = m_map.offsets.take(guid))
            unused.append(offset);
    m_dirty |= !unused.isEmpty();
    std::sort(unused.begin(), unused.end());
    for (const quint32 offset : std::as_const(unused))
        if (const auto block = m_file.blockAt(offset))
            m_map.freeBlocks.append({offset, block->capacity, m_sequenceID});
}

void PILocatorManager::save()
{
    if (!m_dirty || !m_file.isOpen())
        return;
    const quint32 next = m_sequenceID + 1;
    // The blocks first: a list that is newer than the blocks would lead to the locators of other files.
    if (!m_file.commit(next)) {
        LogString("Can't write locator database seq#: %d", errno);
        return;
    }
    const auto list = m_map.toPropertyList();
    if (!list || !putDamagedListAside() || !FileWriter::replace(m_plistPath, *list, FileWriter::Flush::ToDisk)) {
        LogString("Can't save locator GUID map at %@", m_plistPath);
        return;
    }
    m_dirty = false;
    m_sequenceID = next;
}

bool PILocatorManager::putDamagedListAside()
{
    if (!m_isListDamaged)
        return true;
    const QString name = UniqueFileName(m_folder, QStringLiteral("locators-damaged"), QStringLiteral("plist"));
    const QString aside = QVString::appendingPathComponent(m_folder, name);
    if (!FileWriter::copyNoReplace(m_plistPath, aside) && !FileWriter::renameNoReplace(m_plistPath, aside))
        return false;
    LogString("Put the damaged locator GUID map aside as %@", aside);
    m_isListDamaged = false;
    return true;
}

void PILocatorManager::close()
{
    save();
    m_file.close();
}
