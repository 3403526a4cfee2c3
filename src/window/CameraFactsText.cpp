#include "CameraFactsText.h"

#include "CameraFacts.h"

#include <QCoreApplication>
#include <QLocale>
#include <QStringList>

#include <cmath>
#include <cstdlib>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("CameraFactsText", text);
}

/// With three digits that matter: "2.8", "0.95", "30", "1200".
QString shortNumber(double number)
{
    return number >= 100 ? QString::number(std::llround(number)) : QLocale().toString(number, 'g', 3);
}

/// Short times are told as cameras tell them, as one part of a second.
QString timeText(double seconds)
{
    constexpr double longestPart = 0.3;
    return seconds < longestPart ? tr("1/%1 s").arg(std::llround(1 / seconds)) : tr("%1 s").arg(shortNumber(seconds));
}

}

QString takenText(const CameraFacts &facts)
{
    if (!facts.taken.isValid())
        return {};
    const QString moment = QLocale().toString(facts.taken, QLocale::ShortFormat);
    if (!facts.secondsFromUtc)
        return moment;
    const int minutes = std::abs(*facts.secondsFromUtc) / 60;
    return QStringLiteral("%1 (UTC%2%3:%4)")
        .arg(moment, *facts.secondsFromUtc < 0 ? QStringLiteral("−") : QStringLiteral("+"))
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

QString exposureText(const CameraFacts &facts)
{
    QStringList parts;
    if (facts.exposureTime > 0)
        parts << timeText(facts.exposureTime);
    if (facts.aperture > 0)
        parts << tr("f/%1").arg(shortNumber(facts.aperture));
    if (facts.iso > 0)
        parts << tr("ISO %1").arg(facts.iso);
    if (facts.focalLength > 0)
        parts << tr("%1 mm").arg(shortNumber(facts.focalLength));
    return parts.join(QStringLiteral(" · "));
}
