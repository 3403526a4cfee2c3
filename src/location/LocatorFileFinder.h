#pragma once

#include "BookmarkResolution.h"
#include "FileFinder.h"
#include "FileIdentity.h"
#include "QVFileLocator.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <functional>
#include <optional>

class BookmarkService;
class LocatorCheck;
class PILocatorManager;
struct CheckedFile;
struct SearchedFile;

/// A file that is to be looked at.
struct PostponedFile
{
    QString guid;
    QString path;
    bool isDoubtful = false; ///< thought to be lost or changed, so it is of interest also that it is not
};

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
    /// With a manager that may be still on its way: it is asked for when it is first needed.
    LocatorFileFinder(std::function<PILocatorManager *()> manager, BookmarkService &bookmarks, Search search);

    FoundFile locate(const QString &guid, const QString &path) override;
    FoundFile relocate(const QString &guid, const QString &path) override;
    void trimUnusedFiles(const QStringList &guidsInUse) override;
    QByteArray bookmark(const QString &guid) override;
    void save() override;
    [[nodiscard]] Preparation preparation() override;
    void usePrepared(const QString &path, const QByteArray &prepared) override;

    /// Until takePostponed(), files are told to be where they are said to be, unseen: while a library is read, which
    /// should wait neither for its locators nor for its disks.
    void postpone() { m_isPostponing = true; }
    [[nodiscard]] bool isPostponing() const { return m_isPostponing; }
    /// The look at those files that is still to be taken.
    [[nodiscard]] LocatorCheck takePostponed();
    /// A look at these files, which are lost as far as is known where they are marked as doubtful.
    [[nodiscard]] LocatorCheck check(QList<PostponedFile> files);
    /// Drops what is stored for these: nobody uses them any more.
    void forget(const QStringList &guids);
    /// Takes up what it told of one file, without another look at it. Where the file is, as far as is known before it
    /// is searched for.
    [[nodiscard]] FoundFile takeChecked(const CheckedFile &file);

    /// Why the path of a locator does not tell where its file is.
    enum class Doubt {
        Lost,     ///< nothing is there
        Occupied, ///< a folder is there
        Changed,  ///< a file is there, but not as it was: edited or replaced, or another that was moved there
    };
    /// Nothing when the file is surely where the path leads. Any thread; who asks about many tells what is mounted.
    [[nodiscard]] static std::optional<Doubt> doubtAbout(QVFileLocator &locator, BookmarkService &bookmarks,
                                                         const Volumes *volumes = nullptr);
    struct Unsettled
    {
        QString guid;
        QVFileLocator locator;
        Doubt doubt = Doubt::Lost;
        bool isNew = true; ///< not noted like this before, or found since
    };
    /// Called whenever there is something to take where nothing was before.
    void setNoteListener(std::function<void()> listener) { m_noteListener = std::move(listener); }
    [[nodiscard]] bool hasUnsettled() const { return !m_unsettled.isEmpty(); }
    /// The files noted since the last call, for searchUnsettled().
    [[nodiscard]] QList<Unsettled> takeUnsettled();
    /// For searchUnsettled(): when what is stored was last on disk before it was opened; nothing when nothing is kept.
    [[nodiscard]] std::optional<FileTime> lastStored();
    /// Stores what the search told about a file, and tells where the file is, without a look at it. A file that was
    /// given another place since it was noted is left there.
    FoundFile settle(const SearchedFile &searched);

private:
    [[nodiscard]] FoundFile takeDoubt(const QString &guid, const QString &path, std::optional<Doubt> doubt);
    void note(const QString &guid, Doubt doubt);
    void noteFound(const QString &guid);
    bool store(const QString &guid, const QVFileLocator &locator);

    struct Noted
    {
        QString guid;
        Doubt doubt = Doubt::Lost;
        bool isNew = true;
    };
    struct Prepared
    {
        QString path;
        QByteArray bookmark;
    };

    [[nodiscard]] PILocatorManager *manager();

    std::function<PILocatorManager *()> m_source; ///< of the manager, until it was asked
    PILocatorManager *m_manager = nullptr;
    BookmarkService &m_bookmarks;
    Search m_search;
    bool m_isPostponing = false;
    QList<PostponedFile> m_postponed;
    QStringList m_guidsInUse; ///< told while postponing
    QHash<QString, Noted> m_unsettled;
    QHash<QString, Doubt> m_doubtful; ///< as noted last, for the guids that have not been found since
    QSet<QString> m_away;             ///< guids of which the last search told that their volume is not mounted
    std::optional<Prepared> m_prepared;
    std::function<void()> m_noteListener;
};

/// What a look at a file told that its reference does not know.
struct CheckedFile
{
    QString guid;
    QString path;                                  ///< where the file is, as far as is known
    std::optional<LocatorFileFinder::Doubt> doubt; ///< it is to be searched for
    /// No locator was stored, and this bookmark was made from the path; empty when there is no file.
    std::optional<QByteArray> newBookmark;
};
