#pragma once

#include "PhotoEdits.h"

#include <QDialog>

#include <functional>
#include <memory>
#include <optional>

class NavigatorModel;
class QPushButton;
class QTreeView;

/// Asks to which folder of the library photos are to be moved or copied, or into which one a folder is to be moved.
class FolderChooser final : public QDialog
{
    Q_OBJECT

public:
    struct Choice
    {
        std::shared_ptr<PIGroup> item; ///< a group stands for its last folder
        PhotoEdits::Transfer transfer = PhotoEdits::Transfer::Move;
    };

    /// For photos of the folder on show, which cannot be chosen. `editor` outlives the dialog.
    FolderChooser(LibraryEditor &editor, int photoCount, QWidget *parent = nullptr);
    /// For a folder, which can go neither into itself nor where it is already.
    FolderChooser(LibraryEditor &editor, const std::shared_ptr<PIFolder> &folder, QWidget *parent = nullptr);

    /// Nothing when the dialog was cancelled.
    [[nodiscard]] std::optional<Choice> choice() const { return m_choice; }

private:
    void build(const QString &question, const std::shared_ptr<PIGroup> &start);
    void enableButtons();
    void choose(PhotoEdits::Transfer transfer);
    [[nodiscard]] std::shared_ptr<PIGroup> selected() const;

    std::function<bool(const std::shared_ptr<PIGroup> &)> m_canTake;
    NavigatorModel *m_model;
    QTreeView *m_tree;
    QPushButton *m_move;
    QPushButton *m_copy;
    std::optional<Choice> m_choice;
};
