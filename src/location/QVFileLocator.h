#pragma once

#include "BookmarkResolution.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

class BookmarkService;
class RunningServices;
class Volumes;

/// How a locator's path is to be understood. The numbers are stored.
enum class LocatorMethod : quint8 {
    Nil = 0,
    Alias = 1,
    Local = 2,
    Cloud = 3,
    Dropbox = 4,
    Google = 5,
    Wuala = 6,
    Unknown = 7, ///< never in a valid locator
};

/// Remembers where one file or folder lives, so that it is found again after it was moved: its last known path, how
/// that is to be understood, and a bookmark. A plain value, of use on any thread.
class QVFileLocator
{
public:
    /// With a bookmark when one can be made. With Nil the method is that of the path.
    QVFileLocator(const QString &path, BookmarkService &bookmarks, LocatorMethod method = LocatorMethod::Nil);
    /// With a bookmark of that path that was made before.
    QVFileLocator(const QString &path, const QByteArray &bookmark);
    /// From the text form; nothing when it is malformed.
    [[nodiscard]] static std::optional<QVFileLocator> fromArchive(const QString &text);
    /// The same from any value; nothing unless it is a text.
    [[nodiscard]] static std::optional<QVFileLocator> fromObject(const QVariant &object);
    /// From the binary form; nothing when it is malformed or of a later version.
    [[nodiscard]] static std::optional<QVFileLocator> fromBinaryArchive(QByteArrayView bytes);

    enum class Returns { Keep, Escape };
    /// The text form: one line of six pieces, apart from the line feeds inside the bookmark's piece, which may be kept.
    [[nodiscard]] QString archive(Returns returns) const;
    [[nodiscard]] QByteArray createBinaryArchive() const;

    /// What verifying a locator told.
    struct Verification
    {
        bool found = false;
        bool changed = false;    ///< the locator is to be stored again
        bool volumeAway = false; ///< not found because its volume is not mounted: nothing was searched or changed
        /// Found at its path, where the file was changed or replaced since the bookmark was made. The bookmark, left as
        /// it is, still tells which file was meant: when that is nowhere else, it is time for a fresh one.
        bool bookmarkOutdated = false;
        QString reason = {}; ///< why it was not found, when that is known
    };
    /// Finds the file, by its bookmark when the path leads nowhere any more, and takes its new place. Costs one look at
    /// the path when something is there.
    [[nodiscard]] Verification verify(BookmarkService &bookmarks,
                                      BookmarkOptions::Mounting mounting = BookmarkOptions::Mounting::Refused);
    /// The beginning of that: what stands at the path. Nothing when neither a file nor a folder does. Who looks at many
    /// tells what is mounted.
    [[nodiscard]] std::optional<Verification> verifyPath(BookmarkService &bookmarks, const Volumes *volumes = nullptr);
    /// Takes the place to which the bookmark was resolved, as verify() does when the path leads nowhere.
    [[nodiscard]] Verification follow(const BookmarkResolution &resolution, BookmarkService &bookmarks);
    /// Makes a new bookmark from the path. On failure, which is logged, the old one stays; `reason` then tells why.
    bool setBookmarkFromPath(BookmarkService &bookmarks, QString *reason = nullptr);

    [[nodiscard]] bool isInTrash() const;
    /// The path for people: without "/Volumes/" in front.
    [[nodiscard]] QString displayText() const;
    [[nodiscard]] const QString &filePath() const { return m_path; }
    [[nodiscard]] bool isEqualToPath(const QString &path) const { return m_path == path; }
    [[nodiscard]] bool isCloudBased() const { return isMethodCloudBased(m_method); }
    /// Whether the service in whose folder the file lives is running; local files need none.
    [[nodiscard]] bool isServiceRunning(const RunningServices &services) const;
    /// Starts that service unless it is running; false when there is none or it does not start.
    [[nodiscard]] bool runService(const RunningServices &services) const;

    /// Null when there is none.
    [[nodiscard]] const QByteArray &bookmark() const { return m_bookmark; }
    void setBookmark(const QByteArray &bookmark) { m_bookmark = bookmark; }
    /// As the last verification found.
    [[nodiscard]] bool isFolder() const { return m_folder; }
    void setFolder(bool folder) { m_folder = folder; }
    [[nodiscard]] LocatorMethod method() const { return m_method; }
    void setMethod(LocatorMethod method) { m_method = method; }
    /// Null when there is none.
    [[nodiscard]] const QString &path() const { return m_path; }
    void setPath(const QString &path) { m_path = path; }
    /// Carried along for programs that care.
    [[nodiscard]] bool isSandboxed() const { return m_sandboxed; }
    void setSandboxed(bool sandboxed) { m_sandboxed = sandboxed; }

    bool operator==(const QVFileLocator &) const = default;

    // The table of methods.
    [[nodiscard]] static QString methodName(LocatorMethod method);
    /// Null for methods without one.
    [[nodiscard]] static QString methodDisplayName(LocatorMethod method);
    /// Unknown when no method has that name.
    [[nodiscard]] static LocatorMethod methodFromName(const QString &name);
    /// The service in whose folder the path lies, else Local.
    [[nodiscard]] static LocatorMethod methodFromPath(const QString &path);
    /// The folder of a service; null for other methods.
    [[nodiscard]] static QString pathForMethod(LocatorMethod method);
    [[nodiscard]] static bool isMethodCloudBased(LocatorMethod method);
    [[nodiscard]] static bool isPathCloudBased(const QString &path);

private:
    QVFileLocator() = default;
    [[nodiscard]] static QString bundleIdentifier(LocatorMethod method);

    QByteArray m_bookmark;
    bool m_folder = false;
    LocatorMethod m_method = LocatorMethod::Nil;
    QString m_path;
    bool m_sandboxed = false;
};
