#include "UniqueFileName.h"

#include "StringUtilities.h"

#include <QFileInfo>

namespace {

bool isTaken(const QString &folder, const QString &name)
{
    const QFileInfo info(QVString::appendingPathComponent(folder, name));
    return info.exists() || info.isSymLink(); // a link that leads nowhere takes its name too
}

}

QString UniqueFileName(const QString &folder, const QString &name, const QString &extension)
{
    QString base = name;
    base.remove(QLatin1Char('/')).remove(QLatin1Char(':'));
    if (base.isEmpty())
        base = QStringLiteral("untitled");
    QString ending;
    if (!extension.isEmpty()) {
        ending = QLatin1Char('.') + extension;
        const QString own = QVString::pathExtension(base);
        if (!own.isEmpty() && QVString::isFuzzyEqualToString(extension, QStringLiteral("zip"))) {
            base.chop(own.size() + 1);
            ending = QLatin1Char('.') + own + QLatin1String(".zip");
        }
        base.remove(QLatin1Char('.'));
    }
    QString candidate = base + ending;
    for (int number = 1; isTaken(folder, candidate); ++number) {
        if (number > 99)
            return QVString::guidString() + ending;
        candidate = base + QLatin1Char('-') + QString::number(number) + ending;
    }
    return candidate;
}
