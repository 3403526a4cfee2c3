#include "MainMenu.h"

#include "AboutBox.h"
#include "LibraryActions.h"

#include <QAction>
#include <QCoreApplication>
#include <QList>
#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

namespace {

/// Commands that belong together; a separator stands between each and the next.
using Sections = QList<QList<Command>>;

template<typename Target>
void addSections(Target &target, const LibraryActions &actions, const Sections &sections)
{
    for (const auto &section : sections) {
        if (!target.actions().isEmpty())
            target.addSeparator();
        for (const Command command : section)
            target.addAction(actions.action(command));
    }
}

QString tr(const char *text)
{
    return QCoreApplication::translate("MainMenu", text);
}

void addFileMenu(QMenuBar &bar, const LibraryActions &actions)
{
    addSections(*bar.addMenu(tr("&File")), actions,
                {{Command::AddFiles, Command::AddFolder, Command::TakeOverWords},
                 {Command::FindOrphans, Command::SearchAgain},
                 {Command::NewFolder, Command::NewGroup},
                 {Command::Save, Command::ClearCaches},
                 {Command::SaveImageAs, Command::ExportPhotos, Command::EmailPhotos},
                 {Command::PageSetup, Command::PrintSelected, Command::PrintFolder},
                 {Command::Quit}});
}

void addEditMenu(QMenuBar &bar, const LibraryActions &actions)
{
    addSections(*bar.addMenu(tr("&Edit")), actions,
                {{Command::Undo, Command::Redo},
                 {Command::Cut, Command::Copy, Command::Paste, Command::Delete},
                 {Command::SelectAll, Command::SelectMarked, Command::SelectUncropped},
                 {Command::Find, Command::FindAgain, Command::FindPrevious, Command::QuickSearch},
                 {Command::Rename, Command::MoveUp, Command::MoveDown}});
}

void addPhotoMenu(QMenuBar &bar, const LibraryActions &actions, QMenu &cropSizes)
{
    QMenu *menu = bar.addMenu(tr("&Photo"));
    addSections(*menu, actions,
                {{Command::ToggleMark, Command::AddKeyword, Command::ManageKeywords},
                 {Command::Crop, Command::ClearCrop},
                 {Command::MoveToFolder, Command::ExtractFolder, Command::CopyToNewFolder},
                 {Command::SortByName, Command::SortByDate, Command::SortAtRandom},
                 {Command::RenameFiles, Command::IncrementDate, Command::Reveal, Command::EditImage},
                 {Command::Trash}});
    menu->insertMenu(actions.action(Command::ClearCrop), &cropSizes);
}

void addEffectsMenu(QMenuBar &bar, const LibraryActions &actions, QMenu &effectSets)
{
    QMenu *menu = bar.addMenu(tr("&Effects"));
    addSections(*menu, actions,
                {{Command::EditEffects, Command::ClearEffects}, {Command::SaveEffectSet, Command::ManageEffectSets}});
    menu->insertMenu(actions.action(Command::SaveEffectSet), &effectSets);
}

void addViewMenu(QMenuBar &bar, const LibraryActions &actions)
{
    addSections(*bar.addMenu(tr("&View")), actions,
                {{Command::PreviewSelection, Command::PreviewFolder},
                 {Command::ZoomPhotoIn, Command::ZoomPhotoOut, Command::FitPhoto, Command::PhotoAtFullSize},
                 {Command::ShowCaptions, Command::ShowDates, Command::ShowFileNames},
                 {Command::FewerColumns, Command::MoreColumns},
                 {Command::ShowDetail, Command::FullScreen},
                 {Command::ShowSelection}});
}

void addToolBar(QMainWindow &window, const LibraryActions &actions)
{
    QToolBar *tools = window.addToolBar(tr("Toolbar"));
    tools->setObjectName(QStringLiteral("MainToolBar"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    tools->setIconSize(QSize(18, 18));
    addSections(*tools, actions,
                {{Command::AddFolder, Command::AddFiles},
                 {Command::Save},
                 {Command::MoreColumns, Command::FewerColumns},
                 {Command::ShowDetail}});
    for (const Command command : {Command::MoreColumns, Command::FewerColumns}) {
        if (auto *button = qobject_cast<QToolButton *>(tools->widgetForAction(actions.action(command))))
            button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    }
}

}

void buildMainMenu(QMainWindow &window, LibraryActions &actions, QMenu &cropSizes, QMenu &effectSets)
{
    QMenuBar &bar = *window.menuBar();
    addFileMenu(bar, actions);
    addEditMenu(bar, actions);
    addPhotoMenu(bar, actions, cropSizes);
    addEffectsMenu(bar, actions, effectSets);
    addViewMenu(bar, actions);
    addSections(*bar.addMenu(tr("&Go")), actions,
                {{Command::Back, Command::Forward}, {Command::PreviousPhoto, Command::NextPhoto}});
    QMenu *help = bar.addMenu(tr("&Help"));
    QObject::connect(help->addAction(tr("About Tamsel Photo")), &QAction::triggered, &window,
                     [&window] { showAboutBox(window); });
    addToolBar(window, actions);
}
