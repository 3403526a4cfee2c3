#pragma once

#include "KeywordCounts.h"
#include "KeywordManager.h"
#include "KeywordSearch.h"
#include "NotificationCenter.h"

#include <QDialog>

#include <memory>

class KeywordTable;
class KeywordTableModel;
class QLabel;
class QLineEdit;
class QPushButton;
class ThumbnailGridView;

/// The keyword manager: a sheet in which keywords are renamed and deleted, and which shows the photos that have the
/// selected one.
class PIKeywordDialog final : public QDialog
{
    Q_OBJECT

public:
    /// Shows the sheet on the window and returns at once. Both outlive the window.
    static void manageKeywords(LibraryEditor &editor, QVUndoManager &undo, QWidget &inWindow);

    PIKeywordDialog(LibraryEditor &editor, QVUndoManager &undo, QWidget *parent);
    ~PIKeywordDialog() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void done(int result) override;

private:
    void build();
    [[nodiscard]] QWidget *buildList();
    [[nodiscard]] QWidget *buildResults();
    void observe();
    /// Commits the changes and closes.
    void ok();
    void toggleDeleted();
    void jumpToPhoto(const std::shared_ptr<PIPhoto> &photo);
    [[nodiscard]] bool commitChanges();
    void selectionChanged();
    void nameDeleteButton();
    void addResults(const PIGroup::PhotoList &photos);
    [[nodiscard]] std::shared_ptr<PIPhoto> firstSelectedResult() const;

    LibraryEditor &m_editor;
    KeywordManager m_keywords;
    KeywordCounts m_counts;
    KeywordSearch m_search;
    std::shared_ptr<PIFolder> m_dummyFolder; ///< of no library: holds what was found
    KeywordTableModel *m_model;
    QLineEdit *m_filter;
    KeywordTable *m_keywordTable;
    QPushButton *m_renameButton;
    QPushButton *m_deleteButton;
    QLabel *m_countLabel;
    ThumbnailGridView *m_thumbnailView;
    QPushButton *m_jumpButton;
    NotificationCenter::Observer m_keywordsObserver;
};
