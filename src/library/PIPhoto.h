#pragma once

#include "DynamicArray.h"
#include "EffectChain.h"
#include "Image.h"
#include "NotFound.h"
#include "PIFileRef.h"
#include "PhotoMoment.h"
#include "PictureRecipe.h"

#include <QImage>
#include <QList>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class FileRefRegistry;
class KeywordVocabulary;
class QVXmlDecoder;
class QVXmlEncoder;

/// One entry of the library: a reference to an image file, and what the library adds to it without touching the file.
/// Folders hold photos by reference; one photo may stand in several. Main thread.
class PIPhoto : public std::enable_shared_from_this<PIPhoto>
{
    struct ArchivedGuid
    {
        QString guid;
    };

public:
    explicit PIPhoto(std::shared_ptr<PIFileRef> fileRef = {});
    /// For fromArchive() alone.
    explicit PIPhoto(ArchivedGuid archived);
    PIPhoto &operator=(const PIPhoto &) = delete;

    /// Same guid, file reference and edits. Not carried: save number, thumbnail date, pending work.
    [[nodiscard]] std::shared_ptr<PIPhoto> copy() const;
    /// Becomes what copy() made of `other`, but for the guid.
    void takeEdits(const PIPhoto &other);
    /// Whether the picture is made differently from the same file, or from another one.
    [[nodiscard]] bool looksDifferent(const PIPhoto &other) const;

    [[nodiscard]] const std::shared_ptr<PIFileRef> &fileRef() const { return m_fileRef; }
    void setFileRef(std::shared_ptr<PIFileRef> fileRef)
    {
        willChange();
        m_fileRef = std::move(fileRef);
    }
    [[nodiscard]] const QString &guid() const { return m_guid; }
    void setGuid(const QString &guid) { m_guid = guid; }
    [[nodiscard]] const QString &caption() const { return m_caption; }
    void setCaption(const QString &caption)
    {
        willChange();
        m_caption = caption;
    }
    [[nodiscard]] bool isMarked() const { return m_marked; }
    void setMarked(bool marked)
    {
        willChange();
        m_marked = marked;
    }
    /// Pixels of the picture as shown without a crop, y downward; empty when not cropped.
    [[nodiscard]] const QRectF &cropRect() const { return m_cropRect; }
    void setCropRect(const QRectF &rect)
    {
        willChange();
        m_cropRect = rect;
    }
    [[nodiscard]] const EffectChain &filterDicts() const { return m_filterDicts; }
    void setFilterDicts(const EffectChain &chain)
    {
        willChange();
        m_filterDicts = chain;
    }
    [[nodiscard]] quint64 saveIndex() const { return m_saveIndex; }
    void setSaveIndex(quint64 index) { m_saveIndex = index; }
    void clearSaveIndex() { m_saveIndex = kNotFound; }
    /// No file reference, or one whose file is lost.
    [[nodiscard]] bool isFileLost() const;
    /// Lost only because the volume of the file is not mounted.
    [[nodiscard]] bool isVolumeAway() const;
    /// Whether the crop has the preset's shape, in either orientation, within one hundredth; preset 0 is free.
    [[nodiscard]] bool goodCrop(int cropSizeIndex) const;

    // Keywords: positions in the library's vocabulary.
    /// Null until the first keyword is set.
    [[nodiscard]] const DynamicArray *keywords() const { return m_keywords.get(); }
    [[nodiscard]] QList<quint64> keywordIndexes() const;
    [[nodiscard]] bool hasKeyword(quint64 index) const;
    void setKeywordIndexes(const QList<quint64> &indexes);
    [[nodiscard]] QString keywordList(const KeywordVocabulary &vocabulary) const;
    /// Parses words and quoted phrases; new ones join the vocabulary. Single characters are dropped.
    void setKeywordList(const QString &text, KeywordVocabulary &vocabulary);
    /// Numbers the photo's keywords that have no number yet. `remap` has one entry per library keyword.
    void markKeywords(std::vector<quint64> &remap, quint64 &nextIndex) const;

    /// Without `remap`, the form for copy and paste: the file by guid, keywords by their library position.
    void archiveToXml(QVXmlEncoder &encoder, const std::vector<quint64> *remapKeywords) const;
    /// From a "photo" element; `orderedFileRefs` as read from the same file. Null means corrupt.
    [[nodiscard]] static std::shared_ptr<PIPhoto> fromArchive(QVXmlDecoder &decoder,
                                                              const QList<std::shared_ptr<PIFileRef>> &orderedFileRefs);
    /// The form of copy and paste, in which the file is named by its guid.
    [[nodiscard]] static std::shared_ptr<PIPhoto> fromArchive(QVXmlDecoder &decoder, const FileRefRegistry &refs);

    // Pictures. The thumbnail maker does the work and keeps the pixels; these fields are its notes on the photo.
    /// The picture as it is to be shown, cropped and filtered; null when the file is lost or unreadable. Reads the
    /// file's header when no handle is at hand, so a window asks for knownImage() and lets a job open the recipe.
    [[nodiscard]] Image renderedImage(ImageCache &cache);
    /// The same if a handle is at hand that still holds, else null. Never opens the file.
    [[nodiscard]] Image knownImage(ImageCache &cache) const;
    /// Of the file as it is, without crop and effects, on the same terms.
    [[nodiscard]] Image knownFileImage(const ImageCache &cache) const;
    [[nodiscard]] PictureRecipe recipe(const ImageCache &cache) const;
    /// Keeps what a job opened from the photo's present recipe. Handles that still hold stay.
    void takePicture(const OpenedPicture &picture, ImageCache &cache);
    /// Seconds since 1970 of the thumbnail file's date; 0 when none was made.
    [[nodiscard]] quint64 thumbnailDate() const { return m_thumbnailDate; }
    void setThumbnailDate(quint64 seconds) { m_thumbnailDate = seconds; }
    [[nodiscard]] bool isWaitingForThumbnail() const { return m_waitingForThumbnail; }
    void setWaitingForThumbnail(bool waiting) { m_waitingForThumbnail = waiting; }
    [[nodiscard]] bool isCropChanged() const { return m_cropChanged; }
    void setCropChanged(bool changed) { m_cropChanged = changed; }

private:
    PIPhoto(const PIPhoto &other);
    /// To be called before anything that copy() carries changes: undo may ask for what the photo is now.
    void willChange()
    {
        if (m_notedAt >= PhotoMoment::newest())
            return;
        PhotoMoment::note(*this);
        m_notedAt = PhotoMoment::newest();
    }
    /// Finds the reference that the element names; nothing when it names one that cannot be.
    using RefResolver = std::function<std::optional<std::shared_ptr<PIFileRef>>(const QVXmlDecoder &)>;
    /// Not one on the file's former place, or on what it was before it changed: those yield no pixels any more.
    [[nodiscard]] bool holds(const Image &image) const;
    [[nodiscard]] static std::shared_ptr<PIPhoto> readArchive(QVXmlDecoder &decoder, const RefResolver &resolve);
    [[nodiscard]] bool readChild(QVXmlDecoder &decoder);
    [[nodiscard]] bool appendKeyword(quint64 index);
    [[nodiscard]] QString keywordNumbers(const std::vector<quint64> *remapKeywords) const;

    std::shared_ptr<PIFileRef> m_fileRef;
    QString m_guid;
    QString m_caption;
    DynamicArrayPtr m_keywords;
    quint64 m_thumbnailDate = 0;
    quint64 m_saveIndex = 0;
    quint64 m_notedAt = PhotoMoment::newest(); ///< no earlier moment knows the photo, or all that do have noted it
    QRectF m_cropRect;
    EffectChain m_filterDicts;
    bool m_marked = false;
    bool m_waitingForThumbnail = false;
    bool m_cropChanged = false;
};
