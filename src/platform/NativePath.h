#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <algorithm>
#include <string_view>

/// Absolute paths as bytes, without a trailing slash except for "/" itself.
namespace NativePath {

/// Into a path that keeps its memory from one call to the next.
inline void join(QByteArray &path, QByteArrayView folder, QByteArrayView name)
{
    const bool needsSlash = !folder.endsWith('/');
    path.resize(folder.size() + (needsSlash ? 1 : 0) + name.size());
    char *at = std::copy_n(folder.data(), folder.size(), path.data());
    if (needsSlash)
        *at++ = '/';
    std::copy_n(name.data(), name.size(), at);
}

[[nodiscard]] inline QByteArray join(QByteArrayView folder, QByteArrayView name)
{
    QByteArray path;
    join(path, folder, name);
    return path;
}

/// Where the last slash stands; every absolute path has one.
[[nodiscard]] inline qsizetype lastSlash(QByteArrayView path)
{
    return static_cast<qsizetype>(std::string_view(path.data(), static_cast<std::size_t>(path.size())).rfind('/'));
}

/// "/" is its own parent.
[[nodiscard]] inline QByteArrayView parentView(QByteArrayView path)
{
    return path.first(std::max<qsizetype>(lastSlash(path), 1));
}
[[nodiscard]] inline QByteArray parent(QByteArrayView path)
{
    return parentView(path).toByteArray();
}

[[nodiscard]] inline QByteArrayView fileName(QByteArrayView path)
{
    return path.sliced(lastSlash(path) + 1);
}

/// Whether `path` is `folder` or stands somewhere beneath it.
[[nodiscard]] inline bool isWithin(const QByteArray &path, const QByteArray &folder)
{
    if (folder.size() <= 1)
        return true;
    return path.startsWith(folder) && (path.size() == folder.size() || path.at(folder.size()) == '/');
}

/// `path`, which is within `from`, as it reads when that folder stands at `to` instead.
[[nodiscard]] inline QByteArray rebased(const QByteArray &path, const QByteArray &from, const QByteArray &to)
{
    if (from == to)
        return path;
    const QByteArrayView rest =
        QByteArrayView(path).sliced(from.size() <= 1 ? 1 : std::min(from.size() + 1, path.size()));
    return rest.isEmpty() ? to : join(to, rest);
}

}
