#include "QVDayIndexFormatter.h"

#include <QDate>
#include <QStringList>

#include <algorithm>
#include <utility>

DayIndex DayIndexForDate(const QDateTime &moment)
{
    const QDate date = moment.toLocalTime().date();
    if (!date.isValid() || date.year() < 0)
        return 0;
    return static_cast<DayIndex>(date.year() * 10000 + date.month() * 100 + date.day());
}

QVDayIndexFormatter::QVDayIndexFormatter(Clock clock)
    : m_clock(std::move(clock))
{}

namespace {

QString unknownText()
{
    return QStringLiteral("<Unknown>");
}

}

QString QVDayIndexFormatter::stringForObjectValue(DayIndex dayIndex) const
{
    const auto value = static_cast<qint32>(dayIndex);
    if (value == 0 && m_blankUnknown)
        return QStringLiteral("");
    if (value >= -9999 && value <= 9999)
        return unknownText();
    return QStringLiteral("%1/%2/%3").arg((value / 100) % 100).arg(value % 100).arg(value / 10000);
}

namespace {

constexpr quint32 kTooLarge = 1'000'000;

/// The value of a text of the digits 0 to 9 alone; empty text is 0. Whatever is longer than any date stays too large.
std::optional<quint32> validInteger(const QString &text)
{
    quint32 value = 0;
    for (const QChar character : text) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9'))
            return {};
        value = std::min(value * 10 + (character.unicode() - u'0'), kTooLarge);
    }
    return value;
}

/// The length of the longest month of that number.
quint32 longestMonth(quint32 month)
{
    constexpr quint32 days[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return days[month - 1];
}

/// The year as four digits; nothing when it is out of range.
std::optional<quint32> fullYear(const QString &text, quint32 currentYear)
{
    const auto year = validInteger(text);
    if (!year || (*year >= 100 && *year < 1900) || *year > 3000)
        return {};
    return *year < 100 ? currentYear / 100 * 100 + *year : *year;
}

struct Reading
{
    DayIndex value = 0;
    QLatin1String fault = QLatin1String(); ///< null when the text names a day
};

Reading readDate(const QString &text, quint32 currentYear)
{
    const QStringList pieces = text.split(QLatin1Char('/'));
    if (pieces.size() < 2)
        return {0, QLatin1String("not in month/day/year format")};
    const auto month = validInteger(pieces.at(0));
    if (!month || *month < 1 || *month > 12)
        return {0, QLatin1String("invalid month value")};
    const auto day = validInteger(pieces.at(1));
    if (!day || *day == 0 || *day > longestMonth(*month))
        return {0, QLatin1String("invalid day value")};
    const auto year = pieces.size() == 2 ? std::optional(currentYear) : fullYear(pieces.at(2), currentYear);
    if (!year)
        return {0, QLatin1String("invalid year value")};
    if (*month == 2 && *day == 29 && !QDate::isLeapYear(static_cast<int>(*year)))
        return {0, QLatin1String("day is beyond the end of that month")};
    return {*year * 10000 + *month * 100 + *day};
}

}

std::optional<DayIndex> QVDayIndexFormatter::getObjectValue(const QString &forString, QString *errorDescription) const
{
    const bool isUnknown = forString.isEmpty() || forString == QLatin1String("?") ||
                           forString.compare(unknownText(), Qt::CaseInsensitive) == 0;
    if (isUnknown)
        return 0;
    const Reading reading = readDate(forString, DayIndexForDate(m_clock()) / 10000);
    if (reading.fault.isNull())
        return reading.value;
    if (errorDescription)
        *errorDescription = QLatin1String("Invalid date: ") + reading.fault;
    return {};
}
