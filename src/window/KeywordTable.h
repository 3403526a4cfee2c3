#pragma once

#include <QTreeView>

class KeywordTableModel;
class QSortFilterProxyModel;

/// The keyword manager's list: one row is selected at most, texts are edited in place, rows to be deleted are red.
class KeywordTable final : public QTreeView
{
    Q_OBJECT

public:
    /// `model` outlives the table.
    explicit KeywordTable(KeywordTableModel &model, QWidget *parent = nullptr);

    /// Shows only keywords that contain the text or are changed.
    void setFilter(const QString &text);
    /// The model's row that is selected; -1 when there is none.
    [[nodiscard]] int selectedRow() const;
    /// Takes the focus, with a row selected.
    void enter();
    /// As double-clicking it does.
    void editSelected();
    /// What is being typed into a row is taken.
    void endEditing();

Q_SIGNALS:
    void selectedRowChanged();
    /// The delete key.
    void deleteWanted();

protected:
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    QSortFilterProxyModel *m_shownRows;
};
