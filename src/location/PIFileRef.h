#pragma once

#include "Image.h"
#include "NotFound.h"

#include <QSizeF>
#include <QString>
#include <QStringList>

#include <memory>

class FileFinder;
struct FoundFile;
class ImageCache;
class QVXmlDecoder;
class QVXmlEncoder;

/// What the file system tells of a file.
struct FileAttributes
{
    quint64 size = 0;        ///< bytes; 0 when unknown
    double creationTime = 0; ///< seconds since 1970; 0 when unknown

    /// Looks at the file, which may take as long as its disk likes: not for the main thread of a program with a window.
    [[nodiscard]] static FileAttributes of(const QString &path);
};

/// The library's handle on one image file. Photos hold one of these, never a path. It follows its file through a
/// FileFinder and caches facts about it. Main thread.
class PIFileRef : public std::enable_shared_from_this<PIFileRef>
{
public:
    /// What a reference reaches up for; owned by the library and outliving every reference.
    struct Environment
    {
        FileFinder *finder = nullptr;
        ImageCache *imageCache = nullptr;
    };

    PIFileRef(const QString &path, const Environment &environment);
    /// From the "ref" element on which the decoder stands; null when its folder index lies outside `folders`.
    [[nodiscard]] static std::shared_ptr<PIFileRef> fromArchive(const QVXmlDecoder &decoder, const QStringList &folders,
                                                                const Environment &environment);
    /// Writes a "ref" element; `folder` is the place in the list of folders of the one in which this file stands.
    void archiveToXml(QVXmlEncoder &encoder, quint64 folder) const;

    [[nodiscard]] const QString &guid() const { return m_guid; }
    [[nodiscard]] const QString &path() const { return m_path; }
    /// Takes the path and makes it findable anew.
    void setPath(const QString &path);
    /// Takes up where the file was found, or that it was not; its facts are read again.
    void take(const FoundFile &file);
    [[nodiscard]] bool isFileLost() const { return m_fileLost; }
    void setFileLost(bool lost) { m_fileLost = lost; }
    /// Lost only because the volume on which the file stands is not mounted.
    [[nodiscard]] bool isVolumeAway() const { return m_fileLost && m_volumeAway; }
    /// Where that volume was mounted; empty when that is not known.
    [[nodiscard]] QString mountPoint() const;
    void setVolumeAway(bool away) { m_volumeAway = away; }

    /// Finds the file's present place, without opening the file; false when it is lost.
    [[nodiscard]] bool verify();
    /// The handle on the picture: from the image cache, else by verifying the file and reading its header.
    /// Null when the file is lost or unreadable.
    [[nodiscard]] Image image();

    // Facts, read when first asked for and kept until the file is located again.
    /// Seconds since 1970; 0 when unknown.
    [[nodiscard]] double creationTime();
    /// Bytes; 0 when unknown.
    [[nodiscard]] quint64 fileSize();
    /// Pixels; empty when unknown. Reads the picture's header when not known yet.
    [[nodiscard]] QSizeF photoSize();
    // The same as far as they are known; these never touch the file.
    [[nodiscard]] double knownCreationTime() const { return m_creationTime; }
    [[nodiscard]] quint64 knownFileSize() const { return m_fileSize; }
    [[nodiscard]] QSizeF knownPhotoSize() const { return m_photoSize; }
    /// Date and size, or there is no file to have them.
    [[nodiscard]] bool areAttributesKnown() const { return m_fileLost || (m_creationTime != 0 && m_fileSize != 0); }
    /// Counts up whenever what was known of the file is given up: what is read for another age is of another file.
    [[nodiscard]] quint32 factsAge() const { return m_factsAge; }
    /// Takes up what was read, as far as that told anything.
    void setFileAttributes(const FileAttributes &attributes);
    /// The file has another content: its facts are read again.
    void forgetFacts();
    void setCreationTime(double seconds) { m_creationTime = seconds; }
    void setFileSize(quint64 bytes) { m_fileSize = bytes; }
    void setPhotoSize(const QSizeF &size) { m_photoSize = size; }

    [[nodiscard]] quint64 saveIndex() const { return m_saveIndex; }
    void setSaveIndex(quint64 index) { m_saveIndex = index; }
    void clearSaveIndex() { m_saveIndex = kNotFound; }

private:
    PIFileRef(const QString &guid, const QString &path, const Environment &environment);
    enum class From { Stored, Path };
    void update(From from);
    void setFileAttributes();

    QString m_path;
    QString m_guid;
    double m_creationTime = 0;
    quint32 m_factsAge = 0;
    QSizeF m_photoSize{0, 0};
    quint64 m_fileSize = 0;
    quint64 m_saveIndex = 0;
    const Environment &m_environment;
    bool m_fileLost = false;
    bool m_volumeAway = false;
};
