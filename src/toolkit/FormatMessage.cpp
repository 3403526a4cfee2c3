#include "FormatMessage.h"

#include <limits>
#include <optional>

namespace {

/// `flags` and `letters` make a conversion of printf for `value`.
template<typename T>
QString printed(const QByteArray &flags, const QByteArray &letters, T value)
{
    const QByteArray format = '%' + flags + letters;
    return QString::asprintf(format.constData(), value); // NOLINT: made of checked pieces
}

QString numberText(qint64 number, QChar conversion, const QByteArray &flags)
{
    if (!QStringLiteral("xXou").contains(conversion))
        return printed(flags, "lld", static_cast<long long>(number));
    // A negative number of 32 bits shows as one, as it does in C.
    const bool narrow = number < 0 && number >= std::numeric_limits<qint32>::min();
    const auto bits = narrow ? quint64(static_cast<quint32>(number)) : static_cast<quint64>(number);
    return printed(flags, QByteArray("ll") + conversion.toLatin1(), static_cast<unsigned long long>(bits));
}

QString numberText(double number, QChar conversion, const QByteArray &flags)
{
    const bool known = QStringLiteral("fFeEgG").contains(conversion);
    return printed(flags, QByteArray(1, known ? conversion.toLatin1() : 'g'), number);
}

QString paddedText(const QString &text, const QByteArray &flags)
{
    const qsizetype point = flags.indexOf('.');
    const QByteArray widthText = point < 0 ? flags : flags.left(point);
    const int width = widthText.toInt(); // negative for "to the left"
    const QString shown = point < 0 ? text : text.left(flags.mid(point + 1).toInt());
    return width < 0 ? shown.leftJustified(-width) : shown.rightJustified(width);
}

}

QString MessageArgument::text(QChar conversion, const QByteArray &flags) const
{
    if (const auto *text = std::get_if<QString>(&m_value))
        return paddedText(*text, flags);
    if (const auto *number = std::get_if<qint64>(&m_value))
        return numberText(*number, conversion, flags);
    return numberText(std::get<double>(m_value), conversion, flags);
}

namespace {

constexpr int kMaxDigits = 2; // of a width or a precision

struct Conversion
{
    QChar kind;
    QByteArray flags;  ///< flags, width and precision as they stand
    qsizetype end = 0; ///< the position behind it
};

/// Takes the characters of `wanted` that stand at `position`, `most` of them.
QByteArray take(const QString &format, qsizetype &position, const char *wanted, int most)
{
    QByteArray taken;
    while (position < format.size() && taken.size() < most && QLatin1String(wanted).contains(format.at(position)))
        taken += format.at(position++).toLatin1();
    return taken;
}

/// The conversion that begins with the percent sign at `position`; nothing when what stands there is none.
std::optional<Conversion> conversionAt(const QString &format, qsizetype position)
{
    constexpr const char *digits = "0123456789";
    Conversion result;
    qsizetype i = position + 1;
    result.flags = take(format, i, "-+ #0", 1);
    result.flags += take(format, i, digits, kMaxDigits);
    if (const QByteArray point = take(format, i, ".", 1); !point.isEmpty()) {
        result.flags += point;
        result.flags += take(format, i, digits, kMaxDigits);
    }
    (void)take(format, i, "hlqjzt", 2);
    if (i >= format.size() || !QLatin1String("@dixXoufFeEgGsc%").contains(format.at(i)))
        return std::nullopt;
    result.kind = format.at(i);
    result.end = i + 1;
    return result;
}

}

QString FormatMessage(const QString &format, const QList<MessageArgument> &arguments)
{
    QString result;
    qsizetype next = 0;
    for (qsizetype i = 0; i < format.size();) {
        const auto conversion = format.at(i) == QLatin1Char('%') ? conversionAt(format, i) : std::nullopt;
        if (!conversion) {
            result += format.at(i++);
            continue;
        }
        i = conversion->end;
        if (conversion->kind == QLatin1Char('%'))
            result += conversion->kind;
        else if (next < arguments.size())
            result += arguments.at(next++).text(conversion->kind, conversion->flags);
        else
            result += QLatin1String("(null)");
    }
    return result;
}
