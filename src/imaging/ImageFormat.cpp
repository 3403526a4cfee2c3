#include "ImageFormat.h"

#include <QHash>

#include <algorithm>

namespace {

// Files whose embedded preview is shown. Most are TIFF inside, with a stamp-sized picture as the first page.
const QStringList &rawExtensions()
{
    static const QStringList list =
        QStringLiteral("3fr arw cr2 cr3 crw dcr dng erf iiq k25 kdc mef mos mrw nef nrw orf "
                       "pef raf raw rw2 rwl sr2 srf srw x3f")
            .split(QLatin1Char(' '));
    return list;
}

const QHash<QString, ImageFormat> &formatsByExtension()
{
    static const QHash<QString, ImageFormat> table = [] {
        QHash<QString, ImageFormat> formats;
        const auto add = [&](ImageFormat format, const char *extensions) {
            for (const QString &extension : QString::fromLatin1(extensions).split(QLatin1Char(' ')))
                formats.insert(extension, format);
        };
        add(ImageFormat::Jpeg, "jpg jpeg jpe jfif");
        add(ImageFormat::Png, "png");
        add(ImageFormat::Tiff, "tif tiff");
        add(ImageFormat::WebP, "webp");
        add(ImageFormat::Heif, "heic heif hif avif");
        add(ImageFormat::Gif, "gif");
        add(ImageFormat::Bmp, "bmp");
        add(ImageFormat::JpegXl, "jxl");
        for (const QString &extension : rawExtensions())
            formats.insert(extension, ImageFormat::Raw);
        return formats;
    }();
    return table;
}

}

const QStringList &readableImageExtensions()
{
    static const QStringList list = [] {
        QStringList extensions = formatsByExtension().keys();
        extensions.sort();
        return extensions;
    }();
    return list;
}

bool isReadableImageExtension(const QString &extension)
{
    return formatsByExtension().contains(extension.toLower());
}

QStringList readableImageNameFilters()
{
    QStringList filters;
    for (const QString &extension : readableImageExtensions())
        filters << QStringLiteral("*.") + extension << QStringLiteral("*.") + extension.toUpper();
    return filters;
}

ImageFormat imageFormatForFileName(const QString &fileName)
{
    const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
    const qsizetype slash = fileName.lastIndexOf(QLatin1Char('/'));
    return dot > slash + 1 ? formatsByExtension().value(fileName.mid(dot + 1).toLower(), ImageFormat::Unknown)
                           : ImageFormat::Unknown;
}

namespace {

bool isHeif(QByteArrayView bytes)
{
    static constexpr const char *brands[] = {"heic", "heix", "hevc", "heim", "heis", "hevm",
                                             "hevs", "mif1", "msf1", "avif", "avis"};
    return bytes.size() >= 12 && bytes.sliced(4, 4) == QByteArrayView("ftyp") &&
           std::any_of(std::begin(brands), std::end(brands),
                       [&](const char *brand) { return bytes.sliced(8, 4) == QByteArrayView(brand); });
}

ImageFormat formatOfBytes(QByteArrayView bytes)
{
    const auto startsWith = [&](const char *magic, qsizetype length) {
        return bytes.startsWith(QByteArrayView(magic, length));
    };
    if (startsWith("\xff\xd8\xff", 3))
        return ImageFormat::Jpeg;
    if (startsWith("\x89PNG\r\n\x1a\n", 8))
        return ImageFormat::Png;
    if (startsWith("II*\0", 4) || startsWith("MM\0*", 4) || startsWith("II+\0", 4) || startsWith("MM\0+", 4))
        return ImageFormat::Tiff;
    if (startsWith("RIFF", 4) && bytes.size() >= 12 && bytes.sliced(8, 4) == QByteArrayView("WEBP"))
        return ImageFormat::WebP;
    if (isHeif(bytes))
        return ImageFormat::Heif;
    if (startsWith("GIF87a", 6) || startsWith("GIF89a", 6))
        return ImageFormat::Gif;
    if (startsWith("\xff\x0a", 2) || startsWith("\0\0\0\x0cJXL \r\n\x87\n", 12))
        return ImageFormat::JpegXl;
    return startsWith("BM", 2) ? ImageFormat::Bmp : ImageFormat::Unknown;
}

}

ImageFormat imageFormat(const QString &fileName, QByteArrayView firstBytes)
{
    return imageFormatForFileName(fileName) == ImageFormat::Raw ? ImageFormat::Raw : formatOfBytes(firstBytes);
}
