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

#include <optional>

namespace {

/// Nothing stands for a separator.
using CommandList = QList<std::optional<Command>>;

template<typename Target>
void addCommands(Target &target, LibraryActions &actions, const CommandList &commands)
{
    for (const auto &command : commands) {
        if (command)
            target.addAction(actions.action(*command));
        else
            target.addSeparator();
    }
}

QString tr(const char *text)
{
    return QCoreApplication::translate("MainMenu", text);
}

}

void buildMainMenu(QMainWindow &window, LibraryActions &actions, QMenu &cropSizes, QMenu &effectSets)
{
    QMenuBar &bar = *window.menuBar();
    addCommands(*bar.addMenu(tr("&File")), actions,
                {Command::AddFiles,    Command::AddFolder,   Command::TakeOverWords, std::nullopt,
                 Command::FindOrphans, Command::SearchAgain, std::nullopt,           Command::NewFolder,
                 Command::NewGroup,    std::nullopt,         Command::Save,          Command::ClearCaches,
                 std::nullopt,         Command::SaveImageAs, Command::ExportPhotos,  Command::EmailPhotos,
                 std::nullopt,         Command::PageSetup,   Command::PrintSelected, Command::PrintFolder,
                 std::nullopt,         Command::Quit});
    addCommands(*bar.addMenu(tr("&Edit")), actions,
                {Command::Undo,
                 Command::Redo,
                 std::nullopt,
                 Command::Cut,
                 Command::Copy,
                 Command::Paste,
                 Command::Delete,
                 std::nullopt,
                 Command::SelectAll,
                 Command::SelectMarked,
                 Command::SelectUncropped,
                 std::nullopt,
                 Command::Find,
                 Command::FindAgain,
                 Command::FindPrevious,
                 Command::QuickSearch,
                 std::nullopt,
                 Command::Rename,
                 Command::MoveUp,
                 Command::MoveDown});
    QMenu *photo = bar.addMenu(tr("&Photo"));
    addCommands(*photo, actions,
                {Command::ToggleMark, Command::AddKeyword, Command::ManageKeywords, std::nullopt, Command::Crop});
    photo->addMenu(&cropSizes);
    addCommands(*photo, actions,
                {Command::ClearCrop, std::nullopt, Command::MoveToFolder, Command::ExtractFolder,
                 Command::CopyToNewFolder, std::nullopt, Command::SortByName, Command::SortByDate,
                 Command::SortAtRandom, std::nullopt, Command::Reveal, Command::EditImage, std::nullopt,
                 Command::RenameFiles, Command::IncrementDate, std::nullopt, Command::Trash});

    QMenu *effects = bar.addMenu(tr("&Effects"));
    addCommands(*effects, actions, {Command::EditEffects, Command::ClearEffects, std::nullopt});
    effects->addMenu(&effectSets);
    addCommands(*effects, actions, {Command::SaveEffectSet, Command::ManageEffectSets});

    QMenu *view = bar.addMenu(tr("&View"));
    addCommands(*view, actions,
                {Command::PreviewSelection, Command::PreviewFolder, std::nullopt, Command::ZoomPhotoIn,
                 Command::ZoomPhotoOut, Command::FitPhoto, Command::PhotoAtFullSize, std::nullopt,
                 Command::ShowCaptions, Command::ShowDates, Command::ShowFileNames, std::nullopt, Command::FewerColumns,
                 Command::MoreColumns, std::nullopt, Command::ShowDetail, Command::FullScreen, std::nullopt,
                 Command::ShowSelection});
    addCommands(*bar.addMenu(tr("&Go")), actions,
                {Command::Back, Command::Forward, std::nullopt, Command::PreviousPhoto, Command::NextPhoto});

    QMenu *help = bar.addMenu(tr("&Help"));
    QObject::connect(help->addAction(tr("About Tamsel Photo")), &QAction::triggered, &window,
                     [&window] { showAboutBox(window); });

    QToolBar *tools = window.addToolBar(tr("Toolbar"));
    tools->setObjectName(QStringLiteral("MainToolBar"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    tools->setIconSize(QSize(18, 18));
    addCommands(*tools, actions,
                {Command::AddFolder, Command::AddFiles, std::nullopt, Command::Save, std::nullopt, Command::MoreColumns,
                 Command::FewerColumns, std::nullopt, Command::ShowDetail});
    for (const Command command : {Command::MoreColumns, Command::FewerColumns}) {
        if (auto *button = qobject_cast<QToolButton *>(tools->widgetForAction(actions.action(command))))
            button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    }
}
