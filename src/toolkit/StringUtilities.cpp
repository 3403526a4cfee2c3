#include "StringUtilities.h"

#include "CharacterClass.h"
#include "UserPaths.h"

#include <QStringList>
#include <QUuid>

#include <algorithm>

namespace QVString {

bool isFuzzyEqualToString(const QString &text, const QString &other)
{
    return !other.isNull() && text.compare(other, Qt::CaseInsensitive) == 0;
}

bool hasFuzzyPrefix(const QString &text, const QString &other)
{
    return !other.isNull() && text.startsWith(other, Qt::CaseInsensitive);
}

bool hasFuzzySuffix(const QString &text, const QString &other)
{
    return !other.isNull() && text.endsWith(other, Qt::CaseInsensitive);
}

bool isOnStopList(const QString &text)
{
    static const QLatin1String words[] = {
        QLatin1String("a"),   QLatin1String("an"),  QLatin1String("and"), QLatin1String("by"),
        QLatin1String("for"), QLatin1String("in"),  QLatin1String("of"),  QLatin1String("on"),
        QLatin1String("or"),  QLatin1String("the"), QLatin1String("to"),  QLatin1String("with"),
    };
    for (const QLatin1String word : words) {
        const int order = word.compare(text, Qt::CaseInsensitive);
        if (order >= 0)
            return order == 0;
    }
    return false;
}

QString substringFrom(const QString &text, quint32 from, quint32 to)
{
    const qsizetype end = std::min<qsizetype>(to, text.size());
    if (qsizetype(from) >= end)
        return QStringLiteral("");
    return text.mid(from, end - from);
}

void deleteCharactersFrom(QString &text, quint32 from, quint32 to)
{
    if (from <= to && qsizetype(from) < text.size())
        text.remove(from, std::min<qsizetype>(to, text.size()) - from);
}

QString numberString(qint64 number)
{
    return QString::number(static_cast<qint32>(number));
}

QString longNumberString(qint64 number)
{
    return QString::number(number);
}

QString guidString()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

char16_t validateFirstUnicodeCharacter(const QString &text)
{
    return text.size() == 1 ? text.front().unicode() : u'\0';
}

}
