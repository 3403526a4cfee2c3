#pragma once

#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

/// A calendar day as one integer, year × 10000 + month × 100 + day; 0 means that the day is unknown. It sorts in date
/// order, but differences of it are no numbers of days.
using DayIndex = quint32;

/// The day on which the moment falls in the user's own time zone.
[[nodiscard]] DayIndex DayIndexForDate(const QDateTime &moment);

/// Shows day indexes as "month/day/year" and reads them back, telling exactly what is wrong with a text.
class QVDayIndexFormatter
{
public:
    using Clock = std::function<QDateTime()>;

    /// `clock` tells the present, from which missing years and centuries come.
    explicit QVDayIndexFormatter(Clock clock = &QDateTime::currentDateTime);

    [[nodiscard]] bool blankUnknown() const { return m_blankUnknown; }
    /// Shows the unknown day as empty text instead of "<Unknown>".
    void setBlankUnknown(bool blankUnknown) { m_blankUnknown = blankUnknown; }

    [[nodiscard]] QString stringForObjectValue(DayIndex dayIndex) const;
    /// Nothing when the text names no day; then `errorDescription` (when given) tells what is wrong with it.
    [[nodiscard]] std::optional<DayIndex> getObjectValue(const QString &forString,
                                                         QString *errorDescription = nullptr) const;

private:
    Clock m_clock;
    bool m_blankUnknown = false;
};
