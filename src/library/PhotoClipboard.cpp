#include "PhotoClipboard.h"

#include "LibraryTags.h"
#include "PhotoLibrary.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "StringUtilities.h"

namespace PhotoClipboard {

QByteArray archive(const PIGroup::PhotoList &photos)
{
    QVXmlEncoder encoder;
    encoder.openTag("photos");
    for (const auto &photo : photos)
        photo->archiveToXml(encoder, nullptr);
    encoder.closeTag("photos");
    return encoder.utf8();
}

namespace {

void makeItsOwn(PIPhoto &photo, const KeywordVocabulary &keywords)
{
    photo.setGuid(QVString::guidString());
    photo.setThumbnailDate(0); // the thumbnail on disk is that of the original
    QList<quint64> known = photo.keywordIndexes();
    if (known.removeIf([&](quint64 index) { return index >= static_cast<quint64>(keywords.count()); }) > 0)
        photo.setKeywordIndexes(known);
}

}

std::optional<PIGroup::PhotoList> unarchive(const QByteArray &xml, const PhotoLibrary &library)
{
    auto decoder = QVXmlDecoder::fromData(xml);
    if (!decoder || !decoder->getNextTag() || decoder->key() != LibraryTag::Photos)
        return std::nullopt;
    PIGroup::PhotoList photos;
    const bool whole = decoder->readChildren([&] {
        const bool namesFile = !decoder->stringAttributeForTag(u"ref").isEmpty();
        const auto photo =
            decoder->key() == LibraryTag::Photo ? PIPhoto::fromArchive(*decoder, library.fileRefs()) : nullptr;
        if (!photo)
            return false;
        makeItsOwn(*photo, library.keywords());
        if (photo->fileRef() || !namesFile)
            photos.append(photo);
        return true;
    });
    return whole ? std::optional(photos) : std::nullopt;
}

}
