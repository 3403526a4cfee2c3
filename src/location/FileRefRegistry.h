#pragma once

#include "PIFileRef.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <memory>

/// All file references, by the path under which each was entered, so that photos of one file share one reference. The
/// key is not changed when a reference is given another path later, but when its file was followed. Main thread.
class FileRefRegistry
{
public:
    /// `environment` is what every reference made here reaches up for; they refer to the copy kept here.
    explicit FileRefRegistry(const PIFileRef::Environment &environment);
    FileRefRegistry(const FileRefRegistry &) = delete;
    FileRefRegistry &operator=(const FileRefRegistry &) = delete;

    [[nodiscard]] std::shared_ptr<PIFileRef> fileRefForPath(const QString &path);
    /// Null when none is registered under that exact path.
    [[nodiscard]] std::shared_ptr<PIFileRef> fileRefForPathIfExists(const QString &path) const;
    /// Null when none has that guid.
    [[nodiscard]] std::shared_ptr<PIFileRef> fileRefForGuid(const QString &guid) const;
    /// Every path under which a reference was entered, and every other one to which one leads by now.
    [[nodiscard]] QStringList knownPaths() const;
    /// Enters these anew under their present paths: to be called when their files were found elsewhere, so that another
    /// file at the old path is not taken for them.
    void takeUpPaths(const QSet<const PIFileRef *> &refs);
    /// Enters these under no path any more: their files are in the trash, and what comes to stand at the paths is new.
    void dropPaths(const QSet<const PIFileRef *> &refs);
    /// How many references there are.
    [[nodiscard]] qsizetype count() const { return m_entries.size(); }

    void clearSaveIndexes();
    /// Writes the "files" section: the folders, then every reference that has a save number, in its order.
    void saveFileRefs(QVXmlEncoder &encoder) const;
    /// Reads the section on which the decoder stands, registers every reference and appends it to `orderedArray`.
    /// False when the document ends inside it or is corrupt; what was read until then stays registered.
    [[nodiscard]] bool readFileRefs(QVXmlDecoder &decoder, QList<std::shared_ptr<PIFileRef>> &orderedArray);

private:
    struct Entry
    {
        QString key; ///< empty: under no path any more
        std::shared_ptr<PIFileRef> ref;
    };
    void add(const QString &key, const std::shared_ptr<PIFileRef> &ref);
    void indexPath(qsizetype at) const;
    template<typename KeyOf>
    void enterAnew(const QSet<const PIFileRef *> &refs, const KeyOf &keyOf);

    PIFileRef::Environment m_environment;
    /// In order of registration. A reference whose key another one took over stays here: photos hold it, and the
    /// positions that they are saved with count it.
    QList<Entry> m_entries;
    // Places in m_entries. A library is read without either: they catch up when they are asked.
    mutable QHash<QString, qsizetype> m_byPath; ///< covers the first m_indexedByPath entries
    mutable qsizetype m_indexedByPath = 0;
    mutable QHash<QString, qsizetype> m_byGuid; ///< covers the first m_indexedByGuid entries
    mutable qsizetype m_indexedByGuid = 0;
};
