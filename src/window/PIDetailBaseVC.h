#pragma once

#include "NotificationCenter.h"

#include <QPointer>
#include <QWidget>

#include <memory>

class PIDetailController;
class PIPhoto;
class PhotoLibrary;

/// About the PIPhoto that the detail pane shows now, or nothing; every section refreshes itself.
inline const QString kUpdateDetailNotification = QStringLiteral("hmphoto.updateDetail");

/// A section of the detail pane: follows the current photo.
class PIDetailBaseVC : public QWidget
{
    Q_OBJECT

public:
    /// Both outlive the section.
    PIDetailBaseVC(PhotoLibrary &library, const PIDetailController &controller, QWidget *parent = nullptr);

protected:
    [[nodiscard]] PhotoLibrary &library() const { return m_library; }
    /// The current photo; null when there is none.
    [[nodiscard]] const std::shared_ptr<PIPhoto> &photo() const;
    [[nodiscard]] bool havePhoto() const;
    /// There is no photo, or its file is lost.
    [[nodiscard]] bool missingFile() const;

    /// The current photo is another one, or something about it changed.
    virtual void selectionChanged() = 0;

private:
    PhotoLibrary &m_library;
    QPointer<const PIDetailController> m_controller; ///< goes before the section does
    NotificationCenter::Observer m_updateObserver;
};
