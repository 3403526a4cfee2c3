#pragma once

#include <QDialog>
#include <QString>

class FilterCatalogue;
class LibraryEditor;
class QListWidget;
class QListWidgetItem;
class QPushButton;

/// The sheet in which effect sets are renamed and deleted. Each change is made at once and can be undone.
class EffectSetsDialog final : public QDialog
{
    Q_OBJECT

public:
    /// Both outlive it.
    EffectSetsDialog(LibraryEditor &editor, const FilterCatalogue &catalogue, QWidget *parent);

private:
    void showSets(const QString &selected);
    void rename(const QListWidgetItem &item);
    void remove();
    void enableButtons();

    LibraryEditor &m_editor;
    const FilterCatalogue &m_catalogue;
    QListWidget *m_list;
    QPushButton *m_rename;
    QPushButton *m_delete;
};

/// Asks for the name of a new effect set, and whether one that has the name already is to be replaced. Empty when the
/// user gave up.
[[nodiscard]] QString askForEffectSetName(LibraryEditor &editor, QWidget &window);
