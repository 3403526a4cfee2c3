#include "FormatMessage.h"

#include <algorithm>
#include <limits>

namespace {

QString hexadecimal(qint64 number)
{
    // A negative number of 32 bits shows eight digits, as C's own "%x" does.
    const bool narrow = number < 0 && number >= std::numeric_limits<qint32>::min();
    const auto bits = narrow ? quint64(static_cast<quint32>(number)) : static_cast<quint64>(number);
    return QString::number(bits, 16);
}

}

QString MessageArgument::text(QChar conversion, int width, bool zeroPadded) const
{
    if (!m_isNumber)
        return m_text.rightJustified(width);
    const QString digits = conversion == QLatin1Char('x') ? hexadecimal(m_number) : QString::number(m_number);
    if (!zeroPadded || !digits.startsWith(QLatin1Char('-')))
        return digits.rightJustified(width, QLatin1Char(zeroPadded ? '0' : ' '));
    return QString(QLatin1Char('-') + digits.mid(1).rightJustified(width - 1, QLatin1Char('0')));
}

namespace {

constexpr int kMaxWidth = 64;

struct Conversion
{
    QChar kind; ///< null when what stands there is no conversion
    int width = 0;
    bool zeroPadded = false;
    qsizetype end = 0; ///< the position behind it
};

/// Reads the conversion that begins with the percent sign at `position`.
Conversion conversionAt(const QString &format, qsizetype position)
{
    Conversion result;
    qsizetype i = position + 1;
    if (i < format.size() && format.at(i) == QLatin1Char('0')) {
        result.zeroPadded = true;
        ++i;
    }
    for (; i < format.size() && format.at(i) >= QLatin1Char('0') && format.at(i) <= QLatin1Char('9'); ++i)
        result.width = std::min(result.width * 10 + (format.at(i).unicode() - u'0'), kMaxWidth);
    if (i < format.size() && QStringLiteral("@dx%").contains(format.at(i)))
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
        const bool percent = format.at(i) == QLatin1Char('%');
        const Conversion conversion = percent ? conversionAt(format, i) : Conversion();
        if (conversion.kind.isNull()) {
            result += format.at(i++);
            continue;
        }
        i = conversion.end;
        if (conversion.kind == QLatin1Char('%'))
            result += conversion.kind;
        else if (next < arguments.size())
            result += arguments.at(next++).text(conversion.kind, conversion.width, conversion.zeroPadded);
        else
            result += QLatin1String("(null)");
    }
    return result;
}
