#pragma once

#include <QDialog>
#include <QString>

class LibraryEditor;
class QListWidget;
class QListWidgetItem;
class QPushButton;

/// The sheet in which effect sets are renamed and deleted. Each change is made at once and can be undone.
class EffectSetsDialog final : public QDialog
{
    Q_OBJECT

public:
    /// `editor` outlives it.
    EffectSetsDialog(LibraryEditor &editor, QWidget *parent);

private:
    void showSets(const QString &selected);
    void rename(const QListWidgetItem &item);
    void remove();
    void enableButtons();

    LibraryEditor &m_editor;
    QListWidget *m_list;
    QPushButton *m_rename;
    QPushButton *m_delete;
};

/// Asks for the name of a new effect set, and whether one that has the name already is to be replaced. Empty when the
/// user gave up.
[[nodiscard]] QString askForEffectSetName(LibraryEditor &editor, QWidget &window);
