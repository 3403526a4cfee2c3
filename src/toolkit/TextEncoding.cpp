#include "StringUtilities.h"

#include <string_view>

namespace QVString {

Encoding identifyStringEncoding(const QString &name)
{
    struct Entry
    {
        QLatin1String name;
        Encoding encoding;
    };
    static const Entry entries[] = {
        {QLatin1String("utf-8"), Encoding::Utf8},
        {QLatin1String("utf-16"), Encoding::Utf16},
        {QLatin1String("iso-8859-1"), Encoding::Latin1},
        {QLatin1String("windows-1252"), Encoding::Windows1252},
        {QLatin1String("us-ascii"), Encoding::Ascii},
        {QLatin1String("utf-16be"), Encoding::Utf16BE},
        {QLatin1String("utf-16le"), Encoding::Utf16LE},
        {QLatin1String("iso-8859-2"), Encoding::Latin2},
        {QLatin1String("iso-2022-jp"), Encoding::Iso2022Jp},
        {QLatin1String("euc-jp"), Encoding::EucJp},
        {QLatin1String("shift_jis"), Encoding::ShiftJis},
        {QLatin1String("utf-32"), Encoding::Utf32},
        {QLatin1String("utf-32be"), Encoding::Utf32BE},
        {QLatin1String("utf-32le"), Encoding::Utf32LE},
        {QLatin1String("windows-1250"), Encoding::Windows1250},
        {QLatin1String("windows-1251"), Encoding::Windows1251},
        {QLatin1String("windows-1253"), Encoding::Windows1253},
        {QLatin1String("windows-1254"), Encoding::Windows1254},
    };
    for (const Entry &entry : entries) {
        if (entry.name.compare(name, Qt::CaseInsensitive) == 0)
            return entry.encoding;
    }
    return Encoding::None;
}

namespace {

// The characters of the bytes from 80 to FF; all of them are defined.
constexpr std::u16string_view kMacRoman = u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
                                          u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";
static_assert(kMacRoman.size() == 128);

QString textFromMacRoman(const QByteArray &bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes.at(i));
        text[i] = QChar(byte < 0x80 ? char16_t(byte) : kMacRoman[byte - 0x80U]);
    }
    return text;
}

/// Decodes what follows a byte-order mark, or all of UTF-8; a sequence cut short at the end counts as an error.
struct Decoding
{
    Decoding(QStringConverter::Encoding encoding, const QByteArray &bytes)
        : decoder(encoding, QStringConverter::Flag::Stateless)
        , text(decoder(bytes))
        , hasError(decoder.hasError())
    {}
    QStringDecoder decoder;
    QString text;
    bool hasError;
};

}

std::optional<DecodedText> textFromDataInUnknownFormat(const QByteArray &bytes)
{
    if (bytes.startsWith("\xFF\xFE"))
        return DecodedText{Decoding(QStringConverter::Utf16LE, bytes).text, Encoding::Utf16LE};
    if (bytes.startsWith("\xFE\xFF"))
        return DecodedText{Decoding(QStringConverter::Utf16BE, bytes).text, Encoding::Utf16BE};
    const Decoding utf8(QStringConverter::Utf8, bytes);
    if (!utf8.hasError)
        return DecodedText{utf8.text, Encoding::Utf8};
    return DecodedText{textFromMacRoman(bytes), Encoding::MacRoman};
}

}
