#pragma once

#include "FakeLibraryView.h"

#include "FileFinder.h"
#include "LibraryEditor.h"
#include "PhotoLibrary.h"

#include <QCoreApplication>
#include <QHash>
#include <QTemporaryDir>
#include <QThread>

#include <functional>

/// Notes what was asked for; refuses when told to.
struct FakeRecorder final : UndoRecorder
{
    QStringList asked;
    bool refuses = false;
    bool setUndoAction(UndoAction action, UndoName name, const UndoContext &context) override
    {
        asked << QStringLiteral("%1/%2/%3")
                     .arg(int(action))
                     .arg(int(name))
                     .arg(context.container ? context.container->name() : QString());
        return !refuses;
    }
};

/// Believes paths, and tells of every file that it is asked to make findable.
struct WatchedFinder final : FileFinder
{
    std::function<void()> asked;
    std::function<void()> preparing; ///< called by whoever prepares, on any thread
    QHash<QString, QByteArray> bookmarks;
    QByteArray bookmark(const QString &guid) override { return bookmarks.value(guid); }
    FoundFile locate(const QString &guid, const QString &path) override
    {
        if (asked)
            asked();
        return m_paths.locate(guid, path);
    }
    FoundFile relocate(const QString &guid, const QString &path) override { return m_paths.relocate(guid, path); }
    void trimUnusedFiles(const QStringList &) override {}
    Preparation preparation() override
    {
        return [this](const QString &path) -> QByteArray {
            if (preparing)
                preparing();
            const bool isMain = QThread::currentThread() == QCoreApplication::instance()->thread();
            return (isMain ? "main " : "worker ") + path.toUtf8();
        };
    }
    void usePrepared(const QString &path, const QByteArray &prepared) override { handedOver.insert(path, prepared); }
    QHash<QString, QByteArray> handedOver;

private:
    PathFileFinder m_paths;
};

/// A library with one group "G" that holds the folders "A" and "B", and everything an edit needs.
struct House
{
    QTemporaryDir thumbnails;
    NotificationCenter notifications;
    WatchedFinder finder;
    PhotoLibrary library{thumbnails.path(), finder, notifications};
    FakeLibraryView view{library};
    FakeRecorder recorder;
    LibraryEditor editor{library, view, recorder};
    std::shared_ptr<PIGroup> group = std::make_shared<PIGroup>(QStringLiteral("G"));
    std::shared_ptr<PIFolder> a = group->makeNewFolder();
    std::shared_ptr<PIFolder> b = group->makeNewFolder();

    House()
    {
        a->setName(QStringLiteral("A"));
        b->setName(QStringLiteral("B"));
        library.groups() << group;
    }

    PIGroup::PhotoList photos(const QStringList &captions)
    {
        PIGroup::PhotoList list;
        for (const QString &caption : captions) {
            list << std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(QStringLiteral("/") + caption));
            list.last()->setCaption(caption);
        }
        return list;
    }

    static QString captions(const PIFolder &folder)
    {
        QString text;
        for (const auto &photo : folder.photos())
            text += photo->caption();
        return text;
    }
};
