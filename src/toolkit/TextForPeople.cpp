#include "TextForPeople.h"

namespace {

QString withGroups(QString number)
{
    for (qsizetype i = number.indexOf(QLatin1Char('.')) - 3; i > 0; i -= 3)
        number.insert(i, QLatin1Char(','));
    return number;
}

}

QString FileSizeString(quint64 bytes)
{
    struct Unit
    {
        float limit;
        float divisor;
        QLatin1String name;
    };
    static const Unit units[] = {
        {1e6F, 1e3F, QLatin1String("KB")},
        {1e9F, 1e6F, QLatin1String("MB")},
        {1e12F, 1e9F, QLatin1String("GB")},
    };
    const auto size = static_cast<float>(bytes);
    Unit unit = {0, 1e12F, QLatin1String("TB")};
    for (const Unit &smaller : units) {
        if (size < smaller.limit) {
            unit = smaller;
            break;
        }
    }
    const float quotient = size / unit.divisor;
    return withGroups(QString::number(static_cast<double>(quotient), 'f', 2)) + QLatin1Char(' ') + unit.name;
}

QString CountText(qint64 count, const QString &one, const QString &many)
{
    QString text = count == 1 ? one : many;
    return text.replace(QLatin1String("%n"), QString::number(count));
}

QString reason(const QString &failureReason, const QString &description)
{
    QString text = failureReason.isEmpty() ? description : failureReason;
    if (text.isEmpty())
        return QStringLiteral("An unknown error occurred.");
    for (QChar &character : text) {
        if (character == QChar(0x2018) || character == QChar(0x2019))
            character = QLatin1Char('\'');
        else if (character == QChar(0x201C) || character == QChar(0x201D))
            character = QLatin1Char('"');
    }
    return text;
}
