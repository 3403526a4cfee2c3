#pragma once

#include "FakeAlerts.h"
#include "FileFinder.h"
#include "LibraryActions.h"
#include "LibraryWindow.h"
#include "PIOutlineView.h"
#include "PIWindowController.h"
#include "PhotoLibrary.h"
#include "UserDefaults.h"

#include <QAction>
#include <QImage>
#include <QTemporaryDir>

/// The real window over a library in a temporary folder.
struct WindowDesk
{
    QTemporaryDir dir;
    NotificationCenter notifications;
    PathFileFinder finder;
    PhotoLibrary library{dir.path(), finder, notifications};
    UserDefaults defaults{dir.filePath(QStringLiteral("preferences.ini"))};
    QString database;
    std::unique_ptr<PIWindowController> controller;

    explicit WindowDesk(const QString &databaseName = QStringLiteral("Photo.xml"))
        : database(dir.filePath(databaseName))
    {
        library.makeDefaultLibrary();
        library.setDirty(false);
        controller = std::make_unique<PIWindowController>(library, defaults, database);
        controller->showWindow(false);
        controller->resetList(nullptr);
    }

    PIOutlineView &outline() const { return *controller->window().findChild<PIOutlineView *>(); }
    std::shared_ptr<PIGroup> group() const { return library.groups().first(); }
    void trigger(Command command) const { controller->actions().action(command)->trigger(); }

    QString makePicture(const QString &name) const
    {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::red);
        const QString path = dir.filePath(name);
        return image.save(path) ? path : QString();
    }
};
