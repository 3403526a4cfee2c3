#pragma once

#include "DispatchQueue.h"
#include "PIDetailBaseVC.h"

#include <functional>

class PIFolder;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

/// The file section: the image file's name, which can be changed, its place, sizes and date, and the way to find it
/// again when it is missing.
class PIDetailFileVC final : public PIDetailBaseVC
{
    Q_OBJECT

public:
    /// Tells which folder the window shows.
    using ShownFolder = std::function<std::shared_ptr<PIFolder>()>;

    PIDetailFileVC(PhotoLibrary &library, const PIDetailController &controller, ShownFolder shownFolder,
                   QWidget *parent = nullptr);

protected:
    void selectionChanged() override;

private:
    void build();
    void showFacts();
    void showLostTree();
    void readPhotoSize();
    void renameFile();
    void setDate();
    void findFile();
    void findMovedTree();

    ShownFolder m_shownFolder;
    DispatchQueue m_worker;
    QLineEdit *m_name;
    QLabel *m_path;
    QToolButton *m_reveal;
    QLabel *m_photoSize;
    QLabel *m_fileSize;
    QDateTimeEdit *m_date;
    QLabel *m_missing;
    QPushButton *m_find;
    QPushButton *m_findTree;
};
