#pragma once

#include "NotFound.h"

#include <QList>
#include <QString>

#include <memory>

class PIFolder;
class PIPhoto;
class QVXmlDecoder;
class QVXmlEncoder;
struct WindowRestoreRecord;

enum class GroupType { Normal = 0, Search = 1, Undeleted = 2 };

/// A node of the library's tree that holds folders. Exactly this class: a top-level group.
class PIGroup : public std::enable_shared_from_this<PIGroup>
{
public:
    using PhotoList = QList<std::shared_ptr<PIPhoto>>;

    explicit PIGroup(const QString &name = {});
    virtual ~PIGroup();
    PIGroup &operator=(const PIGroup &) = delete;

    /// A shallow copy: same guid, name, type and state; a new list of the same folders. The save number is not copied.
    [[nodiscard]] virtual std::shared_ptr<PIGroup> copy() const;
    /// The folder that this is, or null for a top-level group.
    [[nodiscard]] virtual PIFolder *asFolder() { return nullptr; }
    [[nodiscard]] virtual const PIFolder *asFolder() const { return nullptr; }

    [[nodiscard]] const QString &name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    [[nodiscard]] const QString &guid() const { return m_guid; }
    [[nodiscard]] QList<std::shared_ptr<PIFolder>> &folders() { return m_folders; }
    [[nodiscard]] const QList<std::shared_ptr<PIFolder>> &folders() const { return m_folders; }
    [[nodiscard]] GroupType groupType() const { return m_groupType; }
    void setGroupType(GroupType type) { m_groupType = type; }
    [[nodiscard]] quint64 saveIndex() const { return m_saveIndex; }
    void setSaveIndex(quint64 index) { m_saveIndex = index; }
    [[nodiscard]] bool isClosed() const { return m_closed; }
    void setClosed(bool closed) { m_closed = closed; }

    /// Makes a folder named "New Folder" at the end of the folders.
    std::shared_ptr<PIFolder> makeNewFolder();
    /// The last folder; made when there is none.
    std::shared_ptr<PIFolder> lastFolder();
    /// Opens this and everything above it, so that it can be seen in the navigator.
    virtual void enforceVisibility();
    /// This and everything beneath it forget their save numbers, photos included.
    virtual void clearSaveIndexes();

    virtual void archiveToXml(QVXmlEncoder &encoder) const;
    /// From the "group" or "folder" element on which the decoder stands; null means a corrupt file. `photos` are all
    /// photos read; a folder that `restore` waits for is noted there.
    [[nodiscard]] static std::shared_ptr<PIGroup> fromArchive(QVXmlDecoder &decoder, const PhotoList &photos,
                                                              WindowRestoreRecord &restore);

protected:
    PIGroup(const PIGroup &other);
    [[nodiscard]] bool readArchive(QVXmlDecoder &decoder, const PhotoList &photos, WindowRestoreRecord &restore);
    /// A child element that a group does not know; false means a corrupt file.
    [[nodiscard]] virtual bool handleUnknownGroupKey(const QVXmlDecoder &decoder, const PhotoList &photos);
    /// Queues what a group and a folder both tell of themselves in their opening tag.
    void archiveIdentity(QVXmlEncoder &encoder) const;
    void archiveFolders(QVXmlEncoder &encoder) const;

private:
    [[nodiscard]] bool readChild(QVXmlDecoder &decoder, const PhotoList &photos, WindowRestoreRecord &restore);
    [[nodiscard]] bool readFolders(QVXmlDecoder &decoder, const PhotoList &photos, WindowRestoreRecord &restore);

    QString m_name;
    QString m_guid;
    QList<std::shared_ptr<PIFolder>> m_folders;
    GroupType m_groupType = GroupType::Normal;
    bool m_closed = false;
    quint64 m_saveIndex = 0;
};
