#include "GeometryText.h"

#include <QLocale>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

QString textFromNumber(double number)
{
    if (!std::isfinite(number))
        return QStringLiteral("0");
    return QString::number(number, std::abs(number) < 1e15 ? 'f' : 'g', QLocale::FloatingPointShortest);
}

QString pairText(double a, double b)
{
    return QLatin1Char('{') + textFromNumber(a) + QLatin1String(", ") + textFromNumber(b) + QLatin1Char('}');
}

/// 0 when the text is no finite number.
double finiteNumber(QStringView text)
{
    if (text.startsWith(u'+'))
        text = text.sliced(1);
    QVarLengthArray<char, 64> ascii(text.size());
    std::transform(text.begin(), text.end(), ascii.begin(), [](QChar unit) { return unit.toLatin1(); });
    double number = 0;
    const auto [end, error] = std::from_chars(ascii.cbegin(), ascii.cend(), number);
    return error == std::errc() && end == ascii.cend() && std::isfinite(number) ? number : 0;
}

/// The first four numbers of the text in their order; the braces only make it readable.
std::array<double, 4> numbersIn(QStringView text)
{
    const auto isBrace = [](QChar unit) { return unit == u'{' || unit == u'}'; };
    std::array<double, 4> numbers = {};
    for (double &number : numbers) {
        const qsizetype comma = text.indexOf(u',');
        QStringView piece = comma < 0 ? text : text.first(comma);
        while (!piece.isEmpty() && (piece.first().isSpace() || isBrace(piece.first())))
            piece = piece.sliced(1);
        while (!piece.isEmpty() && (piece.back().isSpace() || isBrace(piece.back())))
            piece.chop(1);
        number = finiteNumber(piece);
        if (comma < 0)
            break;
        text = text.sliced(comma + 1);
    }
    return numbers;
}

}

QString textFromRect(const QRectF &rect)
{
    return QLatin1Char('{') + pairText(rect.x(), rect.y()) + QLatin1String(", ") +
           pairText(rect.width(), rect.height()) + QLatin1Char('}');
}

QRectF rectFromText(const QString &text)
{
    const auto [x, y, width, height] = numbersIn(text);
    return {x, y, width, height};
}

QString textFromPoint(const QPointF &point)
{
    return pairText(point.x(), point.y());
}

QPointF pointFromText(const QString &text)
{
    const auto numbers = numbersIn(text);
    return {numbers[0], numbers[1]};
}
