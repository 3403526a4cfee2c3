#pragma once

#include "NotificationCenter.h"
#include "PhotoStep.h"

#include <QObject>
#include <QVariantMap>

#include <memory>

class DetailPane;
class FilterCatalogue;
class LibraryEditor;
class PIDetailCropVC;
class PIDetailEffectVC;
class PIDetailWordsVC;
class PIImageView;
class PIPhoto;
class PhotoLibrary;
class QAction;
class QBoxLayout;
class QVUndoManager;
class QWidget;
class StepControl;
class UserDefaults;

/// The pane at the right: the current photo, large, over sections of facts about it that can be folded away. It follows
/// the announcements of the current photo, which every part of the program reads from here.
class PIDetailController final : public QObject
{
    Q_OBJECT

public:
    /// All outlive the controller.
    PIDetailController(LibraryEditor &editor, QVUndoManager &undo, const FilterCatalogue &catalogue,
                       UserDefaults &defaults, QWidget *parent);
    ~PIDetailController() override;

    /// The current photo; null when there is none.
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const { return m_photo; }
    /// Owned by its parent widget.
    [[nodiscard]] QWidget *view() const;
    [[nodiscard]] PIImageView &photoView() const { return *m_photoView; }
    /// The section of caption and keywords.
    [[nodiscard]] PIDetailWordsVC &wordController() const { return *m_wordController; }
    /// The section of the crop.
    [[nodiscard]] PIDetailCropVC &cropController() const { return *m_cropController; }
    /// The section of effects.
    [[nodiscard]] PIDetailEffectVC &effectController() const { return *m_effectController; }
    /// Puts buttons for these commands under the photo, usable when there is another photo to go to.
    void addStepControl(QAction &previous, QAction &next);
    /// Puts the field beside those buttons.
    void addQuickSearch(QWidget &field);

private:
    [[nodiscard]] QWidget *makeSections(QVUndoManager &undo, const FilterCatalogue &catalogue);
    void addSection(const QString &layoutName, const QString &title, QWidget *content, QBoxLayout &layout);
    void photoWasSelected(const NotificationObject &object);
    void reloadPhoto();
    void showCurrentPhoto();
    [[nodiscard]] bool canStep() const;
    [[nodiscard]] QList<std::shared_ptr<PIPhoto>> neighbours();

    LibraryEditor &m_editor;
    PhotoLibrary &m_library;
    UserDefaults &m_defaults;
    std::shared_ptr<PIPhoto> m_photo;
    QVariantMap m_openSections; ///< by layout name
    QWidget *m_photoSide;       ///< the photo and what belongs to it
    QBoxLayout *m_tools;        ///< under the photo
    PIImageView *m_photoView;
    qint64 m_position = 0;                           ///< of the photo in the folder on show
    StepDirection m_direction = StepDirection::Next; ///< that led there
    StepControl *m_stepControl = nullptr;            ///< null until there are commands for it
    PIDetailWordsVC *m_wordController = nullptr;
    PIDetailCropVC *m_cropController = nullptr;
    PIDetailEffectVC *m_effectController = nullptr;
    DetailPane *m_view;
    NotificationCenter::Observer m_selectObserver;
    NotificationCenter::Observer m_thumbnailObserver;
    NotificationCenter::Observer m_photoObserver;
    NotificationCenter::Observer m_redrawObserver;
    NotificationCenter::Observer m_redetailObserver;
};
