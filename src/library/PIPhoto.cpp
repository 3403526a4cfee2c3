#include "PIPhoto.h"

#include "CropSizes.h"
#include "FileRefRegistry.h"
#include "GeometryText.h"
#include "ImageCache.h"
#include "KeywordText.h"
#include "KeywordVocabulary.h"
#include "LibraryTags.h"
#include "NumberList.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "StringUtilities.h"

#include <algorithm>
#include <cmath>

PIPhoto::PIPhoto(std::shared_ptr<PIFileRef> fileRef)
    : m_fileRef(std::move(fileRef))
    , m_guid(QVString::guidString())
{}

PIPhoto::PIPhoto(ArchivedGuid archived)
    : m_guid(std::move(archived.guid))
{}

PIPhoto::PIPhoto(const PIPhoto &other)
    : std::enable_shared_from_this<PIPhoto>()
    , m_fileRef(other.m_fileRef)
    , m_guid(other.m_guid)
    , m_caption(other.m_caption)
    , m_cropRect(other.m_cropRect)
    , m_filterDicts(other.m_filterDicts)
    , m_marked(other.m_marked)
{
    setKeywordIndexes(other.keywordIndexes());
}

std::shared_ptr<PIPhoto> PIPhoto::copy() const
{
    return std::shared_ptr<PIPhoto>(new PIPhoto(*this));
}

void PIPhoto::takeEdits(const PIPhoto &other)
{
    willChange();
    m_fileRef = other.m_fileRef;
    m_caption = other.m_caption;
    m_cropRect = other.m_cropRect;
    m_filterDicts = other.m_filterDicts;
    m_marked = other.m_marked;
    setKeywordIndexes(other.keywordIndexes());
}

bool PIPhoto::looksDifferent(const PIPhoto &other) const
{
    return m_fileRef != other.m_fileRef || m_cropRect != other.m_cropRect || m_filterDicts != other.m_filterDicts;
}

bool PIPhoto::isVolumeAway() const
{
    return m_fileRef && m_fileRef->isVolumeAway();
}

bool PIPhoto::isFileLost() const
{
    return !m_fileRef || m_fileRef->isFileLost();
}

bool PIPhoto::goodCrop(int cropSizeIndex) const
{
    if (cropSizeIndex <= 0 || cropSizeIndex >= static_cast<int>(kCropSizes.size()))
        return true;
    if (m_cropRect.height() == 0)
        return false;
    const auto [width, height] = kCropSizes.at(static_cast<size_t>(cropSizeIndex));
    const double shape = 100 * m_cropRect.width() / m_cropRect.height();
    return std::abs(100 * width / height - shape) <= 1.0 || std::abs(100 * height / width - shape) <= 1.0;
}

QList<quint64> PIPhoto::keywordIndexes() const
{
    QList<quint64> indexes;
    if (!m_keywords)
        return indexes;
    indexes.resize(m_keywords->count);
    for (std::uint32_t i = 0; i < m_keywords->count; ++i)
        FetchDynamicArrayEntry(m_keywords.get(), i, &indexes[i]);
    return indexes;
}

bool PIPhoto::hasKeyword(quint64 index) const
{
    quint64 each = 0;
    for (std::uint32_t i = 0; m_keywords && i < m_keywords->count; ++i) {
        FetchDynamicArrayEntry(m_keywords.get(), i, &each);
        if (each == index)
            return true;
    }
    return false;
}

void PIPhoto::setKeywordIndexes(const QList<quint64> &indexes)
{
    willChange();
    if (m_keywords)
        m_keywords->count = 0;
    for (const quint64 index : indexes) {
        if (!appendKeyword(index))
            return;
    }
}

bool PIPhoto::appendKeyword(quint64 index)
{
    if (!m_keywords)
        m_keywords.reset(CreateDynamicArray(sizeof index, 0));
    return m_keywords && AppendToDynamicArray(m_keywords.get(), &index) != kNoDynamicArrayIndex;
}

QString PIPhoto::keywordList(const KeywordVocabulary &vocabulary) const
{
    QString text;
    const auto indexes = keywordIndexes();
    for (qsizetype i = 0; i < indexes.size(); ++i) {
        if (indexes.at(i) >= static_cast<quint64>(vocabulary.count()))
            continue;
        if (i > 0)
            text += u' ';
        text += vocabulary.words().at(static_cast<qsizetype>(indexes.at(i)));
    }
    return text;
}

void PIPhoto::setKeywordList(const QString &text, KeywordVocabulary &vocabulary)
{
    QList<quint64> indexes;
    const auto spans = KeywordText::spansIn(text);
    for (const KeywordText::Span &span : spans) {
        if (span.isKeyword(text))
            indexes.append(vocabulary.indexOfOrAppend(text.sliced(span.begin, span.length)));
    }
    setKeywordIndexes(indexes);
}

void PIPhoto::markKeywords(std::vector<quint64> &remap, quint64 &nextIndex) const
{
    const auto indexes = keywordIndexes();
    for (const quint64 index : indexes) {
        if (index < remap.size() && remap[index] == kNotFound)
            remap[index] = nextIndex++;
    }
}

void PIPhoto::archiveToXml(QVXmlEncoder &encoder, const std::vector<quint64> *remapKeywords) const
{
    encoder.addAttribute("seq", m_saveIndex);
    encoder.addAttribute("id", m_guid);
    if (m_fileRef && remapKeywords)
        encoder.addAttribute("ref", m_fileRef->saveIndex());
    else if (m_fileRef)
        encoder.addAttribute("ref", m_fileRef->guid());
    encoder.openTag("photo");
    if (m_marked)
        encoder.addTag("mark", 1);
    if (!m_caption.isEmpty())
        encoder.addTag("caption", m_caption);
    const QString keys = keywordNumbers(remapKeywords);
    if (!keys.isEmpty())
        encoder.addTag("keys", keys);
    if (m_thumbnailDate != 0)
        encoder.addTagWithLongNumber("thumb", static_cast<qint64>(m_thumbnailDate));
    if (m_cropRect.width() != 0 && m_cropRect.height() != 0)
        encoder.addTag("crop", textFromRect(m_cropRect));
    if (!m_filterDicts.isEmpty())
        ArchiveFilters(encoder, m_filterDicts);
    encoder.closeTag("photo");
}

// Keywords beyond the vocabulary cannot be shown and have no number in a file.
QString PIPhoto::keywordNumbers(const std::vector<quint64> *remapKeywords) const
{
    QString numbers;
    const auto indexes = keywordIndexes();
    for (const quint64 index : indexes) {
        if (!remapKeywords)
            NumberList::append(numbers, index);
        else if (index < remapKeywords->size())
            NumberList::append(numbers, (*remapKeywords)[index]);
    }
    return numbers;
}

std::shared_ptr<PIPhoto> PIPhoto::fromArchive(QVXmlDecoder &decoder,
                                              const QList<std::shared_ptr<PIFileRef>> &orderedFileRefs)
{
    return readArchive(decoder, [&](const QVXmlDecoder &tag) -> std::optional<std::shared_ptr<PIFileRef>> {
        const qint64 position = tag.integerAttributeForTag(u"ref");
        if (position == 0 && tag.stringAttributeForTag(u"ref").isNull())
            return nullptr;
        if (position < 0 || position >= orderedFileRefs.size())
            return std::nullopt;
        return orderedFileRefs.at(position);
    });
}

std::shared_ptr<PIPhoto> PIPhoto::fromArchive(QVXmlDecoder &decoder, const FileRefRegistry &refs)
{
    return readArchive(decoder,
                       [&](const QVXmlDecoder &tag) { return refs.fileRefForGuid(tag.stringAttributeForTag(u"ref")); });
}

namespace {

// A photo's guid names its thumbnail file, so that a file from outside must not choose a name that leads elsewhere.
bool isUsableGuid(const QString &guid)
{
    constexpr qsizetype kLongest = 80;
    return !guid.isEmpty() && guid.size() <= kLongest && !guid.startsWith(u'.') &&
           std::none_of(guid.cbegin(), guid.cend(), [](QChar unit) { return unit == u'/' || unit < u' '; });
}

}

std::shared_ptr<PIPhoto> PIPhoto::readArchive(QVXmlDecoder &decoder, const RefResolver &resolve)
{
    if (decoder.key() != LibraryTag::Photo && !(decoder.getNextTag() && decoder.key() == LibraryTag::Photo))
        return nullptr;
    const int base = decoder.endTag() ? decoder.level() : decoder.level() - 1;
    const auto fileRef = resolve(decoder);
    if (!fileRef)
        return nullptr;
    QString guid = decoder.stringAttributeForTag(u"id");
    const auto photo = std::make_shared<PIPhoto>(ArchivedGuid{isUsableGuid(guid) ? guid : QVString::guidString()});
    photo->m_fileRef = *fileRef;
    while (decoder.level() > base) {
        if (!decoder.getNextTag())
            return nullptr;
        if (decoder.level() > base && !photo->readChild(decoder))
            return nullptr;
    }
    return photo;
}

namespace {

QRectF finiteRectFromText(const QString &text)
{
    const QRectF rect = rectFromText(text);
    return qIsFinite(rect.x() + rect.y() + rect.width() + rect.height()) ? rect : QRectF();
}

}

bool PIPhoto::readChild(QVXmlDecoder &decoder)
{
    switch (decoder.key()) {
    case LibraryTag::Caption:
        m_caption = decoder.value();
        return true;
    case LibraryTag::Crop:
        m_cropRect = finiteRectFromText(decoder.value());
        return true;
    case LibraryTag::Filters:
        m_filterDicts = UnarchiveFilters(decoder).value_or(EffectChain());
        return true;
    case LibraryTag::Keys:
        return NumberList::forEach(decoder.value(),
                                   [this](qint64 number) { return appendKeyword(static_cast<quint64>(number)); });
    case LibraryTag::Mark:
        m_marked = decoder.integerValue() != 0;
        return true;
    case LibraryTag::Thumb:
        m_thumbnailDate = static_cast<quint64>(std::max<qint64>(0, decoder.integerValue()));
        return true;
    default:
        return true;
    }
}

Image PIPhoto::renderedImage(ImageCache &cache)
{
    const Image known = knownImage(cache);
    if (!known.isNull() || !m_fileRef || m_fileRef->image().isNull())
        return known;
    return knownImage(cache); // of the handle that the reference has stored
}

bool PIPhoto::holds(const Image &image) const
{
    return image.isCurrent() && (image.path().isEmpty() || !m_fileRef || image.path() == m_fileRef->path());
}

Image PIPhoto::knownImage(ImageCache &cache) const
{
    const Image cached = cache.imageForGuid(m_guid);
    if (holds(cached))
        return cached;
    const Image file = knownFileImage(cache);
    if (file.isNull())
        return {};
    const Image shown = PictureRecipe::renderedFrom(file, m_cropRect, m_filterDicts);
    cache.storeImage(shown, m_guid);
    return shown;
}

Image PIPhoto::knownFileImage(const ImageCache &cache) const
{
    const Image file = m_fileRef ? cache.imageForGuid(m_fileRef->guid()) : Image();
    return holds(file) ? file : Image();
}

PictureRecipe PIPhoto::recipe(const ImageCache &cache) const
{
    if (!m_fileRef)
        return {};
    return {m_fileRef->path(), cache.imageForGuid(m_fileRef->guid()), m_cropRect, m_filterDicts};
}

void PIPhoto::takePicture(const OpenedPicture &picture, ImageCache &cache)
{
    if (!m_fileRef || picture.file.isNull() || m_fileRef->path() != picture.file.path())
        return;
    m_fileRef->setPhotoSize(picture.file.size());
    // Who shows the photo by an equal handle need not begin again.
    if (!cache.imageForGuid(m_fileRef->guid()).isCurrent())
        cache.storeImage(picture.file, m_fileRef->guid());
    if (picture.shown.isNull() || !cache.imageForGuid(m_guid).isCurrent())
        cache.storeImage(picture.shown, m_guid);
}
