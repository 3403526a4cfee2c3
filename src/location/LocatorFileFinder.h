#pragma once

#include "BookmarkResolution.h"
#include "FileFinder.h"
#include "QVFileLocator.h"

#include <QHash>
#include <QList>

#include <functional>

class BookmarkService;
class PILocatorManager;

/// Keeps files findable through locators. As long as a file stands where its locator says, untouched, finding it costs
/// one look at the path. Main thread.
class LocatorFileFinder final : public FileFinder
{
public:
    enum class Search {
        AtOnce, ///< a file that is not where its path leads is looked for at once, however long that takes
        Later,  ///< it is noted for takeUnsettled(), and told as the path alone has it
    };
    /// Without a manager nothing is stored, and every locator is made from its path. Both outlive the finder.
    LocatorFileFinder(PILocatorManager *manager, BookmarkService &bookmarks, Search search);
    void setSearch(Search search) { m_search = search; }

    FoundFile locate(const QString &guid, const QString &path) override;
    FoundFile relocate(const QString &guid, const QString &path) override;
    void trimUnusedFiles(const QStringList &guidsInUse) override;
    QByteArray bookmark(const QString &guid) override;

    /// Why the path of a locator does not tell where its file is.
    enum class Doubt {
        Lost,     ///< nothing is there
        Occupied, ///< a folder is there
        Changed,  ///< a file is there, but not as it was: edited or replaced, or another that was moved there
    };
    struct Unsettled
    {
        QString guid;
        QVFileLocator locator;
        Doubt doubt = Doubt::Lost;
    };
    /// The files noted since the last call, for searchUnsettled().
    [[nodiscard]] QList<Unsettled> takeUnsettled();
    /// Takes up what the search told about a file, stores it, and tells where the file is.
    FoundFile settle(const Unsettled &file, const BookmarkResolution &resolution);

private:
    void store(const QString &guid, const QVFileLocator &locator);

    PILocatorManager *m_manager;
    BookmarkService &m_bookmarks;
    Search m_search;
    QHash<QString, Doubt> m_unsettled;
};

/// A file with what the search told about it.
struct SearchedFile
{
    LocatorFileFinder::Unsettled file;
    BookmarkResolution resolution;
};

/// Looks for all the files on the calling thread, which is not the main one, and hands them to `searched`, some at a
/// time. `options` tells how far to go.
void searchUnsettled(const QList<LocatorFileFinder::Unsettled> &files, const BookmarkOptions &options,
                     const std::function<void(const QList<SearchedFile> &)> &searched);
