#pragma once

#include "PhotoEdits.h"

#include <QDialog>

#include <memory>
#include <optional>

class NavigatorModel;
class QPushButton;
class QTreeView;

/// Asks to which folder of the library photos are to be moved or copied.
class FolderChooser final : public QDialog
{
    Q_OBJECT

public:
    struct Choice
    {
        std::shared_ptr<PIGroup> item; ///< a group stands for its last folder
        PhotoEdits::Transfer transfer = PhotoEdits::Transfer::Move;
    };

    /// `editor` outlives the dialog. The folder on show cannot be chosen.
    FolderChooser(LibraryEditor &editor, int photoCount, QWidget *parent = nullptr);

    /// Nothing when the dialog was cancelled.
    [[nodiscard]] std::optional<Choice> choice() const { return m_choice; }

private:
    void enableButtons();
    void choose(PhotoEdits::Transfer transfer);
    [[nodiscard]] std::shared_ptr<PIGroup> selected() const;

    LibraryEditor &m_editor;
    NavigatorModel *m_model;
    QTreeView *m_tree;
    QPushButton *m_move;
    QPushButton *m_copy;
    std::optional<Choice> m_choice;
};
