#include "KeptOriginal.h"

#include "StringUtilities.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<const char *, 12> kMarks = {"~",         ".bak",      ".backup",   ".old",
                                                 ".orig",     ".original", "_original", "-original",
                                                 " original", "_backup",   "-backup",   "_bak"};

/// The name without its extension and the dot before that.
QStringView stemOf(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    return QStringView(name).first(dot > 0 ? dot : name.size());
}

bool isMark(QStringView text)
{
    return std::any_of(kMarks.begin(), kMarks.end(),
                       [&](const char *mark) { return text.compare(QLatin1String(mark), Qt::CaseInsensitive) == 0; });
}

}

bool isKeptOriginal(const QString &place, const QString &path)
{
    if (QVString::deletingLastPathComponent(place) != QVString::deletingLastPathComponent(path))
        return false;
    const QString name = QVString::lastPathComponent(path);
    const QString kept = QVString::lastPathComponent(place);
    if (kept.size() > name.size() && kept.startsWith(name))
        return true; // "a.jpg~", "a.jpg_original"
    const QStringView stem = stemOf(name);
    if (stem.isEmpty() || !kept.startsWith(stem))
        return false;
    const QStringView extension = QStringView(name).sliced(stem.size());
    QStringView rest = QStringView(kept).sliced(stem.size()); // "a.bak", "a_original.jpg"
    if (!extension.isEmpty() && rest.size() > extension.size() && rest.endsWith(extension))
        rest.chop(extension.size());
    return isMark(rest);
}
