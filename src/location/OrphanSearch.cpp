#include "OrphanSearch.h"

#include "BookmarkMatcher.h"
#include "DirectoryWalk.h"
#include "ImageFormat.h"
#include "KnownFiles.h"
#include "LogString.h"
#include "NativePath.h"
#include "StringUtilities.h"
#include "TrashFolders.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <string_view>
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
            if (const auto key = keyOf(extension.toStdString()))
                m_keys.push_back(key);
        std::sort(m_keys.begin(), m_keys.end());
    }

    [[nodiscard]] bool accepts(std::string_view name)
    {
        const std::size_t dot = name.rfind('.');
        if (dot == std::string_view::npos || dot == 0)
            return false;
        const quint64 key = keyOf(name.substr(dot + 1));
        if (key == 0 || key == m_last)
            return key != 0;
        if (!std::binary_search(m_keys.cbegin(), m_keys.cend(), key))
            return false;
        m_last = key;
        return true;
    }

private:
    /// The extension in lower case as one number; 0 when it is empty or longer than any of a picture.
    static quint64 keyOf(std::string_view extension)
    {
        quint64 key = 0;
        if (extension.size() > sizeof key)
            return 0;
        for (const char c : extension)
            key = key << 8 | static_cast<quint8>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
        return key;
    }

    std::vector<quint64> m_keys; ///< sorted
    quint64 m_last = 0;          ///< the next file nearly always has the same
};

/// One walk for orphans.
class Search
{
public:
    Search(const OrphanRequest &request, const std::stop_token &stop, const std::function<void(qsizetype)> &progress)
        : m_request(request)
        , m_stop(stop)
        , m_progress(progress)
        , m_root(QFile::encodeName(QFileInfo(request.folder).canonicalFilePath()))
        , m_known(request.knownPaths, {QFile::encodeName(request.folder), m_root})
    {}

    OrphanSearchResult run()
    {
        const auto visit = [this](const DirectoryWalk::Folder &folder, std::span<const DirectoryWalk::Entry> entries) {
            visitFolder(folder.path, entries);
            return DirectoryWalk::Visit::Continue;
        };
        DirectoryWalk walk(visit,
                           {.stop = m_stop, .borders = DirectoryWalk::Borders::Crossed, .unreadable = logUnreadable});
        (void)walk.walk(m_root);
        m_result.unreadableFolders = walk.unreadableFolders();
        m_result.orphans.sort();
        tellMissing();
        m_result.cancelled = m_stop.stop_requested();
        return std::move(m_result);
    }

private:
    void visitFolder(const QByteArray &path, std::span<const DirectoryWalk::Entry> entries)
    {
        if (!m_isAskedFor && isAside(path))
            return;
        const QByteArray folder = path.mid(m_root.endsWith('/') ? m_root.size() : m_root.size() + 1);
        const KnownFiles::Folder known = m_known.folder(folder);
        for (const DirectoryWalk::Entry &entry : entries) {
            const std::string_view name(entry.name);
            if (entry.type == EntryType::File && m_filter.accepts(name) && !known.contains(name))
                m_result.undecodableNames += m_result.orphans.add(folder, name) ? 0 : 1;
        }
        m_result.filesSeen += static_cast<qsizetype>(entries.size());
        if (m_progress)
            m_progress(m_result.filesSeen);
    }

    /// What is thrown away, and what programs keep for themselves, thumbnails above all.
    bool isAside(const QByteArray &path) const
    {
        return m_trash.hold(path) || (!m_cache.isEmpty() && NativePath::isWithin(path, m_cache));
    }

    static void logUnreadable(const QByteArray &path, const QString &reason)
    {
        LogString("Can't read folder %@: %@", QFile::decodeName(path), reason);
    }

    void tellMissing()
    {
        for (const BookmarkMatcher::Match &match : matchesOf(m_request.missing)) {
            m_result.missing.insert(match.path, m_request.missing[match.bookmark].guid);
            if (match.byContent)
                m_result.byContent.insert(match.path);
        }
        // By themselves, so that a photo elsewhere with the same content does not leave a missing one in doubt.
        for (const BookmarkMatcher::Match &match : matchesOf(m_request.away))
            if (match.byContent && !m_result.missing.contains(match.path))
                m_result.copiesOfAway.insert(match.path, m_request.away[match.bookmark].guid);
    }

    QList<BookmarkMatcher::Match> matchesOf(const QList<MissingFile> &files) const
    {
        if (files.isEmpty() || m_result.orphans.count() == 0)
            return {};
        QList<QByteArray> bookmarks;
        for (const MissingFile &file : files)
            bookmarks.append(file.bookmark);
        QStringList paths;
        for (qsizetype index = 0; index < m_result.orphans.count(); ++index)
            paths.append(QVString::appendingPathComponent(m_request.folder, m_result.orphans.path(index)));
        return BookmarkMatcher(bookmarks).match(paths, m_stop);
    }

    const OrphanRequest &m_request;
    const std::stop_token m_stop;
    const std::function<void(qsizetype)> &m_progress;
    const QByteArray m_root; ///< free of links, because a walk follows none
    const TrashFolders m_trash;
    const QByteArray m_cache = QFile::encodeName(
        QFileInfo(QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)).canonicalFilePath());
    const bool m_isAskedFor = isAside(m_root); ///< then its files are what was asked for
    const KnownFiles m_known;
    ExtensionFilter m_filter;
    OrphanSearchResult m_result;
};

}

OrphanSearchResult findOrphans(const OrphanRequest &request, const std::stop_token &stop,
                               const std::function<void(qsizetype)> &progress)
{
    return Search(request, stop, progress).run();
}
