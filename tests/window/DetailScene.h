#pragma once

#include "../editing/UndoHouse.h"

#include "FilterCatalogue.h"
#include "LibraryNotifications.h"
#include "PIDetailController.h"
#include "UserDefaults.h"

#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

/// A detail pane over the first of two photos of one folder, with undo.
struct DetailScene : UndoHouse
{
    QTemporaryDir dir;
    UserDefaults defaults{dir.filePath(QStringLiteral("preferences.ini"))};
    QString path = dir.filePath(QStringLiteral("a.png"));
    FilterCatalogue catalogue{filterBackEnd()};
    QWidget window;
    std::unique_ptr<PIDetailController> controller;
    std::shared_ptr<PIPhoto> photo;
    std::shared_ptr<PIPhoto> other = std::make_shared<PIPhoto>();

    DetailScene()
    {
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::red);
        image.save(path);
        photo = std::make_shared<PIPhoto>(library.fileRefs().fileRefForPath(path));
        a->photos() << photo << other;
        view.folder = a;
        makePane();
        window.show();
        window.activateWindow();
        select(photo);
    }

    void makePane()
    {
        controller = std::make_unique<PIDetailController>(undoable, manager, catalogue, defaults, &window);
    }

    void select(const std::shared_ptr<PIPhoto> &current) { notifications.post(kSelectNotification, current); }

    /// As after the file was changed.
    void showAnew()
    {
        photo->fileRef()->forgetFacts();
        select(photo);
    }

    /// All that is told.
    QStringList texts() const
    {
        QStringList texts;
        for (const auto *label : window.findChildren<QLabel *>())
            texts << label->text();
        return texts;
    }

    template<typename Widget>
    Widget &child(const char *accessibleName) const
    {
        for (Widget *widget : window.findChildren<Widget *>()) {
            if (widget->accessibleName() == QLatin1String(accessibleName))
                return *widget;
        }
        qFatal("no such widget");
    }

    /// What can be pressed now.
    QStringList offeredButtons() const
    {
        QStringList texts;
        for (const auto *button : window.findChildren<QPushButton *>()) {
            if (button->isVisible() && button->isEnabled())
                texts << button->text();
        }
        return texts;
    }
};
