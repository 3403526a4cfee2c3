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
    /// The pixel size if it is known already; never touches the file.
    [[nodiscard]] QSizeF knownPhotoSize() const { return m_photoSize; }
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
    QSizeF m_photoSize{0, 0};
    quint64 m_fileSize = 0;
    quint64 m_saveIndex = 0;
    const Environment &m_environment;
    bool m_fileLost = false;
    bool m_volumeAway = false;
};
