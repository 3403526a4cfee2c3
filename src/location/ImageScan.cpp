#include "ImageScan.h"

#include "DirectoryReader.h"
#include "ImageFormat.h"
#include "LogString.h"
#include "StringUtilities.h"

#include <QCollator>
#include <QFile>
#include <QLocale>
#include <QSet>

#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace {

/// Deeper trees than this are no photo collections, and every level costs stack.
constexpr int kMaxDepth = 500;

/// The user's order of names; the "C" locale knows none that counts.
QLocale sortingLocale()
{
    const QLocale locale;
    return locale.language() == QLocale::C ? QLocale(QLocale::English) : locale;
}

class Walk
{
public:
    Walk(const std::function<void(ScanStep)> &report, const std::atomic<bool> &cancelled)
        : m_report(report)
        , m_cancelled(cancelled)
        , m_collator(sortingLocale())
    {
        m_collator.setNumericMode(true);
        m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    }

    ScanSummary run(const QStringList &paths)
    {
        for (const QString &path : paths) {
            if (m_cancelled)
                break;
            visit(path, entryTypeAt(path), /*depth=*/0);
        }
        m_summary.cancelled = m_cancelled;
        return m_summary;
    }

private:
    void visit(const QString &path, std::optional<EntryType> type, int depth)
    {
        if (type == EntryType::Folder) {
            walkFolder(path, depth);
        } else if (type == EntryType::File && isReadableImageExtension(QVString::pathExtension(path))) {
            ++m_summary.images;
            m_report({ScanStep::Kind::Image, path});
        }
    }

    void walkFolder(const QString &path, int depth)
    {
        if (depth > kMaxDepth)
            return noteUnreadable(path, QStringLiteral("Too many folders inside each other"));
        if (!isFirstVisit(path))
            return;
        QString reason;
        auto listing = readDirectory(path, &reason);
        if (!listing)
            return noteUnreadable(path, reason);
        m_summary.skippedNames += listing->undecodableNames;
        QList<DirectoryEntry> entries = visibleEntries(path, std::move(listing->entries));
        if (entries.isEmpty())
            return;

        ++m_summary.folders;
        m_report({ScanStep::Kind::FolderBegins, path});
        for (const EntryType wanted : {EntryType::Folder, EntryType::File}) {
            for (const DirectoryEntry &entry : std::as_const(entries)) {
                if (m_cancelled)
                    break;
                if (entry.type == wanted)
                    visit(QVString::appendingPathComponent(path, entry.name), entry.type, depth + 1);
            }
        }
        m_report({ScanStep::Kind::FolderEnds, path});
    }

    void noteUnreadable(const QString &path, const QString &reason)
    {
        ++m_summary.unreadableFolders;
        LogString("Can't read folder %@: %@", path, reason);
    }

    /// Two paths may lead to one folder, and a link may lead back up.
    bool isFirstVisit(const QString &path)
    {
        struct stat facts = {};
        if (::stat(QFile::encodeName(path).constData(), &facts) != 0)
            return false;
        const std::pair<quint64, quint64> identity(facts.st_dev, facts.st_ino);
        if (m_visited.contains(identity))
            return false;
        m_visited.insert(identity);
        return true;
    }

    QList<DirectoryEntry> visibleEntries(const QString &folder, QList<DirectoryEntry> entries)
    {
        entries.removeIf([](const DirectoryEntry &entry) { return entry.name.startsWith(u'.'); });
        for (DirectoryEntry &entry : entries) {
            if (entry.type == EntryType::Link)
                entry.type =
                    entryTypeAt(QVString::appendingPathComponent(folder, entry.name)).value_or(EntryType::Other);
        }
        std::sort(entries.begin(), entries.end(), [this](const DirectoryEntry &a, const DirectoryEntry &b) {
            const int order = m_collator.compare(a.name, b.name);
            return order != 0 ? order < 0 : a.name < b.name;
        });
        return entries;
    }

    const std::function<void(ScanStep)> &m_report;
    const std::atomic<bool> &m_cancelled;
    QCollator m_collator;
    QSet<std::pair<quint64, quint64>> m_visited;
    ScanSummary m_summary;
};

}

ScanSummary scanForImages(const QStringList &paths, const std::function<void(ScanStep)> &report,
                          const std::atomic<bool> &cancelled)
{
    return Walk(report, cancelled).run(paths);
}
