#include "CameraFacts.h"

#include "Decoder.h"
#include "LogString.h"
#include "OpenFile.h"
#include "SafeMetadata.h"

#include <algorithm>
#include <cmath>

namespace {

QString tidied(const std::string &text)
{
    QString tidy = QString::fromUtf8(text.c_str()).simplified(); // cameras fill up with nulls
    tidy.truncate(200);
    const bool tells = std::any_of(tidy.cbegin(), tidy.cend(), [](QChar c) { return c.isLetterOrNumber(); });
    return tells ? tidy : QString();
}

QString textOf(const Exiv2::ExifData &exif, const char *key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? QString() : tidied(found->toString());
}

/// 0 for what is no number above 0 that a camera could mean.
double numberOf(const Exiv2::ExifData &exif, const char *key)
{
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    if (found == exif.end() || found->count() < 1 || found->typeId() == Exiv2::asciiString)
        return 0;
    const auto [above, below] = found->toRational();
    const double number = below != 0 ? double(above) / below : 0;
    return number > 0 && number < 1e6 ? number : 0;
}

QString withoutRepeatedMaker(const QString &maker, const QString &model)
{
    const QString first = maker.section(u' ', 0, 0);
    const bool repeats = !first.isEmpty() && model.startsWith(first, Qt::CaseInsensitive);
    return repeats ? model : QString(maker + u' ' + model).trimmed();
}

/// Those that cameras leave out are told by their own notes, if Exiv2 can read those.
QString lensIn(const Exiv2::ExifData &exif)
{
    const QString told = textOf(exif, "Exif.Photo.LensModel");
    if (!told.isEmpty())
        return told;
    const auto found = Exiv2::lensName(exif);
    const QString lens = found == exif.end() ? QString() : tidied(found->print(&exif));
    return lens.startsWith(u'(') ? QString() : lens; // a number that has no name
}

/// "+02:00"
std::optional<int> offsetIn(const QString &text)
{
    const QTime time = QTime::fromString(text.mid(1), QStringLiteral("hh:mm"));
    if (!time.isValid() || (text.at(0) != u'+' && text.at(0) != u'-'))
        return std::nullopt;
    const int seconds = time.msecsSinceStartOfDay() / 1000;
    return text.at(0) == u'-' ? -seconds : seconds;
}

void readTaken(CameraFacts &facts, const Exiv2::ExifData &exif)
{
    constexpr const char *moments[][2] = {{"Exif.Photo.DateTimeOriginal", "Exif.Photo.0x9011"},
                                          {"Exif.Photo.DateTimeDigitized", "Exif.Photo.0x9012"}};
    for (const auto &[moment, offset] : moments) {
        const QString form = QStringLiteral("yyyy:MM:dd hh:mm:ss");
        facts.taken = QDateTime::fromString(textOf(exif, moment), form);
        facts.taken.setTimeSpec(Qt::UTC);
        if (!facts.taken.isValid())
            continue;
        facts.secondsFromUtc = offsetIn(textOf(exif, offset));
        return;
    }
    facts.taken = {};
}

CameraFacts factsIn(const Exiv2::ExifData &exif)
{
    CameraFacts facts;
    readTaken(facts, exif);
    facts.camera = withoutRepeatedMaker(textOf(exif, "Exif.Image.Make"), textOf(exif, "Exif.Image.Model"));
    facts.lens = lensIn(exif);
    facts.exposureTime = numberOf(exif, "Exif.Photo.ExposureTime");
    facts.aperture = numberOf(exif, "Exif.Photo.FNumber");
    facts.focalLength = numberOf(exif, "Exif.Photo.FocalLength");
    const auto iso = Exiv2::isoSpeed(exif);
    facts.iso = iso == exif.end() || iso->count() < 1 ? 0 : int(std::clamp(iso->toLong(), 0L, 10'000'000L));
    return facts;
}

}

CameraFacts CameraFacts::ofFile(const QString &path)
{
    const auto file = openRegularFile(path);
    if (!file)
        return {};
    const PictureBlocks blocks = Decoder::readBlocks(file->descriptor.number(), path);
    Exiv2::ExifData exif = SafeMetadata::exif(blocks.exif, path);
    try {
        if (exif.empty()) // exports may tell the moment there
            Exiv2::copyXmpToExif(SafeMetadata::xmp(blocks.xmp, SafeMetadata::XmpPart::All, path), exif);
        return factsIn(exif);
    } catch (const std::exception &) {
        LogException(path, QStringLiteral("reading camera facts"));
        return {};
    }
}
