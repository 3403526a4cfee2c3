#pragma once

#include "NotificationCenter.h"

#include <QObject>
#include <QVariantMap>

#include <functional>
#include <memory>

class PIFolder;
class PIPhoto;
class PhotoLibrary;
class PhotoView;
class QBoxLayout;
class QSplitter;
class QWidget;
class UserDefaults;

/// The pane at the right: the current photo, large, over sections of facts about it that can be folded away. It follows
/// the announcements of the current photo, which every part of the program reads from here.
class PIDetailController final : public QObject
{
    Q_OBJECT

public:
    /// Tells which folder the window shows.
    using ShownFolder = std::function<std::shared_ptr<PIFolder>()>;

    /// `library` and `defaults` outlive the controller.
    PIDetailController(PhotoLibrary &library, UserDefaults &defaults, ShownFolder shownFolder, QWidget *parent);
    ~PIDetailController() override;

    /// The current photo; null when there is none.
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const { return m_photo; }
    /// Owned by its parent widget.
    [[nodiscard]] QWidget *view() const;
    [[nodiscard]] PhotoView &photoView() const { return *m_photoView; }

private:
    void addSection(const QString &layoutName, const QString &title, QWidget *content, QBoxLayout &layout);
    void photoWasSelected(const NotificationObject &object);
    void reloadPhoto();

    PhotoLibrary &m_library;
    UserDefaults &m_defaults;
    std::shared_ptr<PIPhoto> m_photo;
    QSplitter *m_view;
    PhotoView *m_photoView;
    QVariantMap m_openSections; ///< by layout name
    NotificationCenter::Observer m_selectObserver;
    NotificationCenter::Observer m_thumbnailObserver;
    NotificationCenter::Observer m_redrawObserver;
};
