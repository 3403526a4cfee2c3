#pragma once

#include <QDate>
#include <QLocale>
#include <QString>

/// Dates for people, without a time: medium long, such as "21 Nov 2026", in the order and words of a locale.
class DateFormatter
{
public:
    explicit DateFormatter(const QLocale &locale = QLocale());

    /// Empty for an invalid date.
    [[nodiscard]] QString string(const QDate &date) const { return m_locale.toString(date, m_format); }

private:
    QLocale m_locale;
    QString m_format;
};

/// The one for the user's locale, set at launch. Main thread.
extern DateFormatter g_dateFormatter;
