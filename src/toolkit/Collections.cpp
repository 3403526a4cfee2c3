#include "Collections.h"

#include <algorithm>

bool boolForKey(const QVariantMap &dictionary, const QString &key)
{
    return dictionary.value(key).toBool();
}

float floatForKey(const QVariantMap &dictionary, const QString &key)
{
    return dictionary.value(key).toFloat();
}

qint64 integerForKey(const QVariantMap &dictionary, const QString &key)
{
    return dictionary.value(key).toLongLong();
}

qint64 integerAtIndex(const QVariantList &array, qsizetype index)
{
    return array.value(index).toLongLong();
}

bool isStringInSortedArray(const QStringList &array, const QString &text, qsizetype *index)
{
    const auto place = std::lower_bound(array.begin(), array.end(), text, [](const QString &a, const QString &b) {
        return a.compare(b, Qt::CaseInsensitive) < 0;
    });
    if (index)
        *index = place - array.begin();
    return place != array.end() && place->compare(text, Qt::CaseInsensitive) == 0;
}
