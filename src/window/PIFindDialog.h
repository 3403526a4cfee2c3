#pragma once

#include "FindCriteria.h"

#include <QDialog>

class PhotoFinder;
class QButtonGroup;
class QCheckBox;
class QGridLayout;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class SearchRun;

/// The sheet that tells what to find and where. It begins with the criteria of the last search and says how many photos
/// match those it shows.
class PIFindDialog final : public QDialog
{
    Q_OBJECT

public:
    /// `finder` outlives it.
    PIFindDialog(PhotoFinder &finder, QWidget *parent);
    /// Shows the sheet over the window, which owns it until it is closed. Once it is accepted the finder's criteria are
    /// what it shows.
    static PIFindDialog &performFindForWindow(PhotoFinder &finder, QWidget &window);

private:
    void addTexts(QGridLayout &grid);
    [[nodiscard]] QLayout *makeScope();
    [[nodiscard]] QLayout *makeStart();
    void showCriteria(const FindCriteria &criteria);
    [[nodiscard]] FindCriteria criteria() const;
    void enableFind();
    void showCount(qint64 matches);
    void find();

    PhotoFinder &m_finder;
    QLineEdit *m_allWords;
    QLineEdit *m_exact;
    QLineEdit *m_oneWord;
    QLineEdit *m_noneWord;
    QCheckBox *m_captions;
    QCheckBox *m_fileNames;
    QCheckBox *m_keywords;
    QButtonGroup *m_start;
    QCheckBox *m_makeFolder;
    QLabel *m_matches;
    QPushButton *m_find = nullptr;
    SearchRun *m_count;
};
