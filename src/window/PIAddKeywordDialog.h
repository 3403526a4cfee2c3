#pragma once

#include "PIGroup.h"

#include <QDialog>

class LibraryEditor;
class QLineEdit;
class QToolButton;

/// The sheet that gives a keyword to all selected photos: those that are selected when it opens, whatever an import
/// that ends meanwhile selects.
class PIAddKeywordDialog final : public QDialog
{
    Q_OBJECT

public:
    /// Shows the sheet on the window and returns at once; beeps when no photo is selected. `editor` outlives the
    /// window.
    static void addKeyword(LibraryEditor &editor, QWidget &inWindow);

    PIAddKeywordDialog(LibraryEditor &editor, QWidget *parent);

private:
    void build();
    [[nodiscard]] QString question() const;
    void addFromList(const QString &keyword);
    void apply();

    LibraryEditor &m_editor;
    std::shared_ptr<PIFolder> m_folder;
    PIGroup::PhotoList m_photos;
    QLineEdit *m_keyword;
    QToolButton *m_keywordPopup;
};
