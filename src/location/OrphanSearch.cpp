#include "OrphanSearch.h"

#include "DirectoryWalk.h"
#include "ImageFormat.h"
#include "StringUtilities.h"

#include <QFile>
#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace {

/// Tells by the raw bytes of a name whether it ends like a picture's, so that other names cost nothing more.
class ExtensionFilter
{
public:
    ExtensionFilter()
    {
        for (const QString &extension : readableImageExtensions())
            m_extensions.insert(extension.toLatin1().toLower());
    }

    [[nodiscard]] bool accepts(const char *name) const
    {
        const char *dot = std::strrchr(name, '.');
        if (!dot || dot == name)
            return false;
        const size_t length = std::strlen(dot + 1);
        std::array<char, 8> lower = {};
        if (length == 0 || length > lower.size())
            return false;
        std::transform(dot + 1, dot + 1 + length, lower.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
        return m_extensions.contains(QByteArray::fromRawData(lower.data(), static_cast<qsizetype>(length)));
    }

private:
    QSet<QByteArray> m_extensions;
};

std::optional<QString> decoded(const QByteArray &path)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder(path);
    if (decoder.hasError() || text.toUtf8() != path)
        return std::nullopt;
    return text;
}

void sortByFileName(QStringList &paths)
{
    std::vector<std::pair<QString, QString>> keyed;
    keyed.reserve(static_cast<size_t>(paths.size()));
    for (const QString &path : std::as_const(paths))
        keyed.emplace_back(QVString::fileNameMinusExtension(path).toCaseFolded(), path);
    std::sort(keyed.begin(), keyed.end());
    std::transform(keyed.begin(), keyed.end(), paths.begin(), [](const auto &entry) { return entry.second; });
}

}

OrphanSearchResult findOrphans(const QString &folder, const QSet<QString> &knownPaths, const std::stop_token &stop,
                               const std::function<void(qsizetype)> &progress)
{
    OrphanSearchResult result;
    const ExtensionFilter filter;
    const QByteArray root = QFile::encodeName(folder);
    const qsizetype prefix = root.endsWith('/') ? root.size() : root.size() + 1;
    const auto visit = [&](const DirectoryWalk::Folder &visited, std::span<const DirectoryWalk::Entry> entries) {
        for (const DirectoryWalk::Entry &entry : entries) {
            if (entry.type != EntryType::File || !filter.accepts(entry.name))
                continue;
            QByteArray path = visited.path;
            if (!path.endsWith('/'))
                path += '/';
            path += entry.name;
            if (const auto text = decoded(path); !text)
                ++result.undecodableNames;
            else if (!knownPaths.contains(*text))
                result.relativePaths << QString::fromUtf8(path.mid(prefix));
        }
        result.filesSeen += static_cast<qsizetype>(entries.size());
        if (progress)
            progress(result.filesSeen);
        return DirectoryWalk::Visit::Continue;
    };
    DirectoryWalk walk(visit, {.stop = stop});
    (void)walk.walk(root);
    result.cancelled = stop.stop_requested();
    sortByFileName(result.relativePaths);
    return result;
}
