#include "ExifFacts.h"

#include <libexif/exif-data.h>

#include <memory>

namespace {

struct ExifDataDeleter
{
    void operator()(ExifData *data) const { exif_data_unref(data); }
};

}

ExifFacts readExif(QByteArrayView exif)
{
    ExifFacts facts;
    const std::unique_ptr<ExifData, ExifDataDeleter> data(exif.isEmpty() ? nullptr : exif_data_new());
    if (!data)
        return facts;
    // Left to itself the library rewrites what it finds to please its standard.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), reinterpret_cast<const unsigned char *>(exif.data()), unsigned(exif.size()));
    const ExifEntry *entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (entry && entry->format == EXIF_FORMAT_SHORT && entry->size >= 2)
        facts.orientation = Orientation(exif_get_short(entry->data, exif_data_get_byte_order(data.get())));
    if (data->data && data->size > 0)
        facts.thumbnail = QByteArray(reinterpret_cast<const char *>(data->data), data->size);
    return facts;
}
