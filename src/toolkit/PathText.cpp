#include "StringUtilities.h"
#include "UserPaths.h"

namespace QVString {

QString abbreviateHomeFolderPath(const QString &path)
{
    const QString home = HomeFolderPath();
    const qsizetype start = home.isEmpty() ? -1 : path.indexOf(home);
    const qsizetype end = start + home.size();
    if (start < 0 || end == path.size())
        return path;
    const QString root = RootPath();
    const bool seenThroughRoot = start == root.size() && path.startsWith(root, Qt::CaseInsensitive);
    if (start != 0 && !seenThroughRoot)
        return path;
    return QString(QLatin1Char('~') + path.mid(end));
}

QString expandTilde(const QString &path)
{
    const QString tilde = QStringLiteral("~");
    if (path == tilde || path.startsWith(QLatin1String("~/")))
        return QString(HomeFolderPath() + path.mid(1));
    return path;
}

namespace {

/// Without slashes at the end, except for the one that is the root folder.
QStringView withoutTrailingSlashes(QStringView path)
{
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}
QString withoutTrailingSlashes(QString path)
{
    path.truncate(withoutTrailingSlashes(QStringView(path)).size());
    return path;
}

/// Where the last component begins in a path without trailing slashes.
qsizetype componentStart(QStringView path)
{
    return path == QLatin1String("/") ? 0 : path.lastIndexOf(QLatin1Char('/')) + 1;
}

/// The position of the dot before the extension; -1 without an extension.
qsizetype extensionDot(QStringView path)
{
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    return dot > componentStart(path) && dot + 1 < path.size() ? dot : -1;
}

QString deletingPathExtension(const QString &path)
{
    const QString whole = withoutTrailingSlashes(path);
    const qsizetype dot = extensionDot(whole);
    return dot < 0 ? whole : whole.left(dot);
}

QString appendingPathExtension(const QString &path, const QString &extension)
{
    if (extension.isEmpty())
        return path;
    return QString(withoutTrailingSlashes(path) + QLatin1Char('.') + extension);
}

}

QString lastPathComponent(const QString &path)
{
    const QString whole = withoutTrailingSlashes(path);
    return whole.mid(componentStart(whole));
}

QString deletingLastPathComponent(const QString &path)
{
    const QString whole = withoutTrailingSlashes(path);
    if (whole == QLatin1String("/"))
        return whole;
    return withoutTrailingSlashes(whole.left(componentStart(whole)));
}

QString appendingPathComponent(const QString &path, const QString &component)
{
    qsizetype start = 0;
    while (start < component.size() && component.at(start) == QLatin1Char('/'))
        ++start;
    const QString folder = withoutTrailingSlashes(path);
    const QString name = withoutTrailingSlashes(component.mid(start));
    if (folder.isEmpty() || name.isEmpty())
        return folder.isEmpty() ? withoutTrailingSlashes(component) : folder;
    return folder.endsWith(QLatin1Char('/')) ? QString(folder + name) : QString(folder + QLatin1Char('/') + name);
}

QString pathExtension(const QString &path)
{
    const QString whole = withoutTrailingSlashes(path);
    const qsizetype dot = extensionDot(whole);
    return dot < 0 ? QStringLiteral("") : whole.mid(dot + 1);
}

QString fileNameMinusExtension(const QString &path)
{
    return fileNameMinusExtensionIn(path).toString();
}

QStringView fileNameMinusExtensionIn(QStringView path)
{
    path = withoutTrailingSlashes(path);
    const QStringView name = path.mid(componentStart(path));
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? name : name.left(dot);
}

QString stringByAppendingFile(const QString &path, const QString &name, const QString &andExtension)
{
    return appendingPathExtension(appendingPathComponent(path, name), andExtension);
}

QString stringByReplacingExtension(const QString &path, const QString &extension)
{
    return appendingPathExtension(deletingPathExtension(path), extension);
}

QString stringByReplacingFile(const QString &path, const QString &name, const QString &andExtension)
{
    return stringByAppendingFile(deletingLastPathComponent(path), name, andExtension);
}

}
