#include "PictureWords.h"

#include "Decoder.h"
#include "LogString.h"
#include "OpenFile.h"
#include "SafeMetadata.h"
#include "Sidecar.h"

#include <QSet>
#include <QStringDecoder>

#include <string>
#include <string_view>
#include <utility>

namespace {

/// On one line, without what cannot be shown, written to the library or told from nothing.
QString tidied(const QString &text)
{
    QString lines = text;
    lines.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    QString tidy;
    for (const QChar unit : std::as_const(lines)) {
        const bool isEnd = unit.isSpace() || unit.category() == QChar::Other_Control;
        if (isEnd)
            tidy += u' ';
        else if (unit.unicode() < 0xfffe)
            tidy += unit;
    }
    return tidy.trimmed();
}

QString captionFrom(const QString &text)
{
    QString caption = tidied(text);
    if (caption.size() > PictureWords::kLongestCaption) {
        caption.truncate(PictureWords::kLongestCaption);
        if (caption.back().isHighSurrogate())
            caption.chop(1);
    }
    return caption;
}

QStringList keywordsFrom(const QStringList &texts)
{
    QStringList keywords;
    QSet<QString> had;
    for (const QString &text : texts) {
        const QString keyword = tidied(text).simplified();
        const QString folded = keyword.toCaseFolded();
        if (keyword.isEmpty() || keyword.size() > PictureWords::kLongestKeyword || had.contains(folded))
            continue;
        if (keywords.size() == PictureWords::kMostKeywords)
            break;
        had.insert(folded);
        keywords << keyword;
    }
    return keywords;
}

QString valueOf(const Exiv2::Value &value, long index)
{
    return QString::fromStdString(value.toString(index));
}

/// The text in the language that is meant for everyone, else in the first one.
QString descriptionIn(const Exiv2::XmpData &xmp)
{
    const auto found = xmp.findKey(Exiv2::XmpKey("Xmp.dc.description"));
    if (found == xmp.end())
        return {};
    const auto *languages = dynamic_cast<const Exiv2::LangAltValue *>(&found->value());
    if (!languages)
        return valueOf(found->value(), 0);
    if (languages->value_.empty())
        return {};
    const auto general = languages->value_.find("x-default");
    const auto &[language, text] = *(general == languages->value_.end() ? languages->value_.begin() : general);
    return text == language ? QString() : QString::fromStdString(text); // some programs write the one for the other
}

QStringList subjectsIn(const Exiv2::XmpData &xmp)
{
    QStringList subjects;
    const auto found = xmp.findKey(Exiv2::XmpKey("Xmp.dc.subject"));
    const long count = found == xmp.end() ? 0 : found->value().count();
    for (long i = 0; i < count; ++i)
        subjects << valueOf(found->value(), i);
    return subjects;
}

PictureWords wordsInXmp(const QByteArray &packet, const QString &source)
{
    try {
        const Exiv2::XmpData xmp = SafeMetadata::xmp(packet, SafeMetadata::XmpPart::Words, source);
        return {captionFrom(descriptionIn(xmp)), keywordsFrom(subjectsIn(xmp))};
    } catch (const std::exception &) {
        LogException(source, QStringLiteral("reading words from XMP"));
        return {};
    }
}

/// In the Windows characters for the West, which most programs mean that do not tell.
QString westernText(const QByteArray &bytes)
{
    static constexpr char16_t kFrom128[] = u"€\x81‚ƒ„…†‡ˆ‰Š‹Œ\x8dŽ\x8f\x90‘’“”•–—˜™š›œ\x9džŸ";
    QString text = QString::fromLatin1(bytes);
    for (QChar &unit : text) {
        if (unit >= QChar(0x80) && unit < QChar(0xa0))
            unit = kFrom128[unit.unicode() - 0x80];
    }
    return text;
}

/// Programs that tell nothing of their characters wrote all records in UTF-8, or none.
QStringList recordTexts(const QByteArrayList &records, bool isUtf8)
{
    QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QStringList texts;
    for (const QByteArray &record : records)
        texts << QString(decoder(record));
    if (isUtf8 || !decoder.hasError())
        return texts;
    texts.clear();
    for (const QByteArray &record : records)
        texts << westernText(record);
    return texts;
}

PictureWords wordsInIptc(const QByteArray &records, const QString &source)
{
    try {
        const Exiv2::IptcData iptc = SafeMetadata::iptc(records, source);
        const auto characters = iptc.findKey(Exiv2::IptcKey("Iptc.Envelope.CharacterSet"));
        const bool isUtf8 = characters != iptc.end() && characters->toString() == "\x1b%G";
        QByteArrayList texts{QByteArray()}; // the caption, then the keywords
        for (const Exiv2::Iptcdatum &datum : iptc) {
            if (datum.record() != Exiv2::IptcDataSets::application2)
                continue;
            if (datum.tag() == Exiv2::IptcDataSets::Caption)
                texts.first() = QByteArray::fromStdString(datum.toString());
            else if (datum.tag() == Exiv2::IptcDataSets::Keywords)
                texts << QByteArray::fromStdString(datum.toString());
        }
        QStringList words = recordTexts(texts, isUtf8);
        const QString caption = words.takeFirst();
        return {captionFrom(caption), keywordsFrom(words)};
    } catch (const std::exception &) {
        LogException(source, QStringLiteral("reading words from IPTC"));
        return {};
    }
}

/// What `words` lacks is taken from `more`.
void complete(PictureWords &words, const PictureWords &more)
{
    if (words.caption.isEmpty())
        words.caption = more.caption;
    if (words.keywords.isEmpty())
        words.keywords = more.keywords;
}

}

PictureWords PictureWords::ofFile(const QString &path)
{
    const Sidecar sidecar = Sidecar::ofFile(path);
    PictureWords words = wordsInXmp(sidecar.packet, sidecar.path);
    const auto file = openRegularFile(path); // one that cannot be opened is told of where its picture is wanted
    if (!file)
        return words;
    const PictureBlocks blocks = Decoder::readBlocks(file->descriptor.number(), path);
    complete(words, wordsInXmp(blocks.xmp, path));
    const bool hasRecords = !blocks.iptc.isEmpty();
    complete(words, wordsInIptc(hasRecords ? blocks.iptc : SafeMetadata::recordsInResources(blocks.resources), path));
    return words;
}
