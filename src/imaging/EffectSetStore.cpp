#include "EffectSetStore.h"

#include <algorithm>

QStringList sortedEffectSetNames(const EffectSetStore &store)
{
    QStringList names = store.keys();
    std::stable_sort(names.begin(), names.end(),
                     [](const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) < 0; });
    return names;
}
