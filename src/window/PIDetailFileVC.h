#pragma once

#include "DispatchQueue.h"
#include "PIDetailBaseVC.h"

#include <QDateTime>

#include <functional>

class CameraRows;
class LostFileCommands;
class PIFileRef;
class PIFolder;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

/// The file section: the image file's name, which can be changed, its place, sizes and date, what it tells of the
/// shot, and the way to find it again when it is missing.
class PIDetailFileVC final : public PIDetailBaseVC
{
    Q_OBJECT

public:
    /// Tells which folder the window shows.
    using ShownFolder = std::function<std::shared_ptr<PIFolder>()>;

    PIDetailFileVC(PhotoLibrary &library, const PIDetailController &controller, ShownFolder shownFolder,
                   QWidget *parent = nullptr);

    ~PIDetailFileVC() override;

protected:
    void selectionChanged() override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void build();
    void showFacts();
    void showName(const PIFileRef *file);
    void showDate(const PIFileRef *file);
    [[nodiscard]] bool isDateEdited() const;
    void showMissing();
    void showLostTree(const QString &folder);
    void readFacts();
    void readPhotoSize();
    void renameFile();
    void setDate();

    LostFileCommands *m_lostFiles;
    std::weak_ptr<PIFileRef> m_shownFile; ///< whose name and date stand in the fields
    double m_fileDate = 0;                ///< which the date field was given last
    QDateTime m_shownDate;                ///< what the field made of it: shown as long as nobody edits it
    QString m_movedFolder;                ///< that of the missing photo on show, and of others
    DispatchQueue m_worker;
    QLineEdit *m_name;
    QLabel *m_path;
    QToolButton *m_reveal;
    QLabel *m_photoSize;
    QLabel *m_fileSize;
    QDateTimeEdit *m_date;
    CameraRows *m_camera = nullptr;
    QLabel *m_missing;
    QPushButton *m_find;
    QPushButton *m_findTree;
    NotificationCenter::Observer m_factsObserver;
};
