#include "Base64.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace {

constexpr qsizetype kLineLength = 76;
constexpr std::uint8_t kNoValue = 0xFF;

/// The six bits that each character of the alphabet stands for.
constexpr std::array<std::uint8_t, 128> makeValues()
{
    std::array<std::uint8_t, 128> values = {};
    values.fill(kNoValue);
    constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::uint8_t i = 0; i < 64; ++i)
        values[static_cast<unsigned char>(alphabet[i])] = i;
    return values;
}

constexpr std::array<std::uint8_t, 128> kValues = makeValues();

}

QString NewBase64StringFromData(const QByteArray &bytes)
{
    const QByteArray encoded = bytes.toBase64();
    QString text;
    text.reserve(encoded.size() + encoded.size() / kLineLength);
    for (qsizetype start = 0; start < encoded.size(); start += kLineLength) {
        const qsizetype length = std::min(kLineLength, encoded.size() - start);
        text += QLatin1String(encoded.constData() + start, length);
        if (length == kLineLength)
            text += QLatin1Char('\n');
    }
    return text;
}

std::optional<QByteArray> NewDataFromBase64String(const QString &text)
{
    QByteArray bytes;
    bytes.reserve(text.size() / 4 * 3 + 3);
    quint32 bits = 0;
    int bitCount = 0;
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (unit == u'\n' || unit == u'\r')
            continue;
        if (unit == u'=')
            break;
        const std::uint8_t value = unit < kValues.size() ? kValues[unit] : kNoValue;
        if (value == kNoValue)
            return {};
        bits = (bits << 6U) | value;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.append(static_cast<char>((bits >> bitCount) & 0xFFU));
        }
    }
    return bytes;
}
