#pragma once

#include "../platform/BookmarkScene.h"
#include "BookmarkService.h"
#include "LibraryFile.h"
#include "LocatorFileFinder.h"
#include "PILocatorManager.h"
#include "PhotoLibrary.h"

#include <QImage>
#include <QTemporaryDir>

/// A library whose photos stand in the folder "volume" of a temporary folder, which is all the world there is, and
/// whose locators are kept beside it.
class FollowedLibrary
{
public:
    FollowedLibrary()
        : m_dir(QDir::tempPath() + QStringLiteral("/followed ü XXXXXX"))
    {
        for (const char *name : {"library", "thumbnails", "volume"})
            QDir().mkpath(m_dir.filePath(QLatin1String(name)));
        m_bookmarks.volumes = BookmarkScene(at(""), BookmarkScene::Photos::Present).volumes();
        manager = PILocatorManager::open(m_dir.filePath(QStringLiteral("library")));
        finder = std::make_unique<LocatorFileFinder>(manager.get(), m_bookmarks, LocatorFileFinder::Search::Later);
        library = std::make_unique<PhotoLibrary>(m_dir.filePath(QStringLiteral("thumbnails")), *finder, notifications);
        const auto group = std::make_shared<PIGroup>(QStringLiteral("G"));
        folder = group->makeNewFolder();
        library->groups() << group;
    }

    /// Reads the library as at the next start: the photos are others, and their files were not looked at yet.
    void reload()
    {
        LibraryFile::registerTags();
        const QString path = m_dir.filePath(QStringLiteral("library/Photo.xml"));
        QVERIFY(LibraryFile::save(path, *library, {}));
        folder.reset();
        library.reset();
        finder = std::make_unique<LocatorFileFinder>([this] { return manager.get(); }, m_bookmarks,
                                                     LocatorFileFinder::Search::Later);
        finder->postpone();
        library = std::make_unique<PhotoLibrary>(m_dir.filePath(QStringLiteral("thumbnails")), *finder, notifications);
        QVERIFY(LibraryFile::load(path, *library).failure.isEmpty());
        folder = library->groups().first()->folders().first();
    }
    /// Where the locator stored for the photo leads.
    [[nodiscard]] QString storedPath(const PIPhoto &photo) const
    {
        const auto locator = manager->locatorForGuid(photo.fileRef()->guid());
        return locator ? locator->path() : QString();
    }
    [[nodiscard]] QString at(const char *name) const
    {
        return m_dir.filePath(QStringLiteral("volume/")) + QString::fromUtf8(name);
    }

    /// A picture that differs from all others.
    void draw(const char *name) const
    {
        QDir().mkpath(QFileInfo(at(name)).path());
        static int count = 0;
        QImage image(60 + ++count, 40, QImage::Format_RGB32);
        image.fill(QColor::fromHsv(count * 37 % 360, 200, 200));
        QVERIFY(image.save(at(name), "png"));
    }
    /// A photo of a new file, with the name as its caption.
    std::shared_ptr<PIPhoto> add(const char *name)
    {
        draw(name);
        auto photo = std::make_shared<PIPhoto>(library->fileRefs().fileRefForPath(at(name)));
        photo->setCaption(QString::fromUtf8(name));
        folder->photos() << photo;
        return photo;
    }
    void move(const char *from, const char *to) const
    {
        QDir().mkpath(QFileInfo(at(to)).path());
        QVERIFY2(::rename(QFile::encodeName(at(from)).constData(), QFile::encodeName(at(to)).constData()) == 0, from);
    }
    /// Looks at every file, as at launch.
    void lookAtAll() const
    {
        for (const auto &photo : std::as_const(folder->photos()))
            (void)photo->fileRef()->verify();
    }
    /// As after another disk was mounted in the place of the first.
    void nameVolume(const QByteArray &identity)
    {
        m_bookmarks.volumes = BookmarkScene(at(""), BookmarkScene::Photos::Present).volumes("ext4", identity);
    }
    /// How far searches go.
    [[nodiscard]] BookmarkOptions options() const
    {
        BookmarkOptions options;
        options.volumes = m_bookmarks.volumes;
        return options;
    }

    /// Called on any thread before a file is looked at, with its bookmark.
    void setLookListener(std::function<void(const QByteArray &)> listener) { m_bookmarks.look = std::move(listener); }

    std::unique_ptr<PILocatorManager> manager;
    std::unique_ptr<LocatorFileFinder> finder;
    NotificationCenter notifications;
    std::unique_ptr<PhotoLibrary> library;
    std::shared_ptr<PIFolder> folder;

private:
    class Bookmarks final : public BookmarkService
    {
    public:
        std::optional<QByteArray> create(const QString &path, QString &reason) override
        {
            return FileBookmark::create(path, *volumes, &reason);
        }
        bool isCurrent(const QByteArray &bookmark, const FileIdentity &present, const Volumes *) override
        {
            if (look)
                look(bookmark);
            return FileBookmark::isCurrent(bookmark, present, volumes.get());
        }
        BookmarkResolution resolve(const QByteArray &, const BookmarkOptions &) override
        {
            qFatal("searched on the main thread");
        }
        std::shared_ptr<const Volumes> volumes;
        std::function<void(const QByteArray &)> look;
    };

    QTemporaryDir m_dir;
    Bookmarks m_bookmarks;
};
