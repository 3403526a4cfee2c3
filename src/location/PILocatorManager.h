#pragma once

#include "FileIdentity.h"
#include "LocatorBlockFile.h"
#include "LocatorMap.h"
#include "QVFileLocator.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

/// All locators as they were at one moment, to be read on another thread while the manager goes on.
struct LocatorSnapshot
{
    QString databasePath;
    QHash<QString, quint32> offsets; ///< by guid

    /// The guids that have a locator and are not among those given.
    [[nodiscard]] QStringList guidsBut(const QStringList &guidsInUse) const;

    /// A block that was written meanwhile reads as it is now, or as none.
    class Reader
    {
    public:
        /// For many reads the database is read at once, and whole.
        enum class Reads { Few, Many };
        explicit Reader(const LocatorSnapshot &snapshot, Reads reads = Reads::Many);
        [[nodiscard]] std::optional<QVFileLocator> locatorForGuid(const QString &guid) const;
        /// Whether there is a database at all.
        [[nodiscard]] bool isStored() const { return !m_snapshot.databasePath.isEmpty(); }

    private:
        const LocatorSnapshot &m_snapshot;
        LocatorBlockFile m_file;
    };
};

/// Stores one locator per file reference, keyed by the reference's guid, in two files of the library's folder: the
/// locators in "locators.database", and where each of them stands in it in "locators.plist". Locators are written at
/// once, the list by save(). What cannot be read is treated as absent. Failures are logged. Main thread.
class PILocatorManager
{
public:
    /// Opens the database in that folder, or makes it. Null when that fails.
    [[nodiscard]] static std::unique_ptr<PILocatorManager> open(const QString &folder);
    PILocatorManager(const PILocatorManager &) = delete;
    PILocatorManager &operator=(const PILocatorManager &) = delete;

    /// Nothing when none is stored or it cannot be read.
    [[nodiscard]] std::optional<QVFileLocator> locatorForGuid(const QString &guid) const;
    /// False when it could not be written; the guid then keeps what it had.
    bool setLocator(const QVFileLocator &locator, const QString &guid);
    /// Forgets the locators of all guids but those given.
    void trimUnusedFiles(const QStringList &guidsInUse);
    /// Gives up the blocks of these guids. Those that have none are passed over.
    void forget(const QStringList &guids);
    /// What is there now; whoever reads many locators reads them from this.
    [[nodiscard]] LocatorSnapshot snapshot() const;
    /// When the locators were last stored before they were opened, else when that was. Until then their files were, as
    /// far as was known, where they led.
    [[nodiscard]] FileTime lastStored() const { return m_lastStored; }
    /// Writes the list, when anything changed since it was last written.
    void save();
    /// Saves and closes; nothing is read or stored any more.
    void close();

private:
    explicit PILocatorManager(const QString &folder);

    struct Allocation;
    /// For a guid whose locator stands at `present`; 0 when it has none.
    [[nodiscard]] Allocation allocateBlock(quint32 length, quint32 present);
    [[nodiscard]] std::optional<FreeBlockList::Block> freeBlockFor(quint32 length);
    [[nodiscard]] bool putDamagedListAside();

    QString m_folder;
    QString m_plistPath;
    QString m_databasePath;
    LocatorBlockFile m_file;
    LocatorMap m_map;
    quint32 m_sequenceID = 0; ///< as last saved
    FileTime m_lastStored;
    bool m_dirty = false;
    bool m_isListDamaged = false; ///< what stands where the list will be written could not be read
};
