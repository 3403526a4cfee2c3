#include "PhotoClipboard.h"

#include "FileRefRegistry.h"
#include "LibraryTags.h"
#include "PIPhoto.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"
#include "StringUtilities.h"

QByteArray PhotoClipboard::textForPhotos(const PIGroup::PhotoList &photos)
{
    QVXmlEncoder encoder;
    encoder.openTag("photos");
    for (const auto &photo : photos)
        photo->archiveToXml(encoder, nullptr);
    encoder.closeTag("photos");
    return encoder.utf8();
}

std::optional<PIGroup::PhotoList> PhotoClipboard::photosFromText(const QByteArray &utf8, const FileRefRegistry &refs)
{
    auto decoder = QVXmlDecoder::fromData(utf8);
    if (!decoder || !decoder->getNextTag() || decoder->key() != LibraryTag::Photos)
        return std::nullopt;
    PIGroup::PhotoList photos;
    while (decoder->getNextTag() && decoder->key() == LibraryTag::Photo) {
        const auto photo = PIPhoto::fromArchive(*decoder, refs);
        if (!photo)
            return std::nullopt;
        photo->setGuid(QVString::guidString());
        if (photo->fileRef())
            photos.append(photo);
    }
    if (photos.isEmpty() || decoder->key() != LibraryTag::Photos || !decoder->error().isEmpty())
        return std::nullopt;
    return photos;
}
