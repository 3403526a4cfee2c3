#include "DateFormatter.h"

#include <QRegularExpression>

namespace {

/// The locale's long form without the day of the week, and with the month shortened where it is a word.
QString mediumFormat(const QLocale &locale)
{
    static const QRegularExpression weekday(QStringLiteral("^dddd[^dMy']*|[\\s,\u060c]*dddd$"));
    QString format = locale.dateFormat(QLocale::LongFormat);
    format.remove(weekday);
    format.replace(QLatin1String("MMMM"), QLatin1String("MMM"));
    // A day of the week in the middle would leave a torso.
    return format.contains(QLatin1String("dddd")) ? locale.dateFormat(QLocale::ShortFormat) : format;
}

}

DateFormatter::DateFormatter(const QLocale &locale)
    : m_locale(locale)
    , m_format(mediumFormat(locale))
{}

DateFormatter g_dateFormatter;
