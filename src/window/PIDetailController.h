#pragma once

#include "NotificationCenter.h"

#include <QObject>
#include <QVariantMap>

#include <memory>

class DetailPane;
class LibraryEditor;
class PIDetailWordsVC;
class PIPhoto;
class PhotoLibrary;
class PhotoView;
class QBoxLayout;
class QWidget;
class UserDefaults;

/// The pane at the right: the current photo, large, over sections of facts about it that can be folded away. It follows
/// the announcements of the current photo, which every part of the program reads from here.
class PIDetailController final : public QObject
{
    Q_OBJECT

public:
    /// `editor` and `defaults` outlive the controller.
    PIDetailController(LibraryEditor &editor, UserDefaults &defaults, QWidget *parent);
    ~PIDetailController() override;

    /// The current photo; null when there is none.
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const { return m_photo; }
    /// Owned by its parent widget.
    [[nodiscard]] QWidget *view() const;
    [[nodiscard]] PhotoView &photoView() const { return *m_photoView; }
    /// The section of caption and keywords.
    [[nodiscard]] PIDetailWordsVC &wordController() const { return *m_wordController; }

private:
    [[nodiscard]] QWidget *makeSections();
    void addSection(const QString &layoutName, const QString &title, QWidget *content, QBoxLayout &layout);
    void photoWasSelected(const NotificationObject &object);
    void reloadPhoto();

    LibraryEditor &m_editor;
    PhotoLibrary &m_library;
    UserDefaults &m_defaults;
    std::shared_ptr<PIPhoto> m_photo;
    QVariantMap m_openSections; ///< by layout name
    PhotoView *m_photoView;
    PIDetailWordsVC *m_wordController = nullptr;
    DetailPane *m_view;
    NotificationCenter::Observer m_selectObserver;
    NotificationCenter::Observer m_thumbnailObserver;
    NotificationCenter::Observer m_redrawObserver;
    NotificationCenter::Observer m_redetailObserver;
};
