#include "ViewCommands.h"

#include "LibraryActions.h"
#include "LibraryWindow.h"
#include "ThumbnailGridView.h"
#include "UserDefaults.h"
#include "WindowPreferences.h"

namespace {

void bindText(LibraryActions &actions, ThumbnailGridView &grid, UserDefaults &defaults, Command command,
              const Preference<bool> &preference, TileLine line)
{
    const bool shown = defaults.value(preference);
    actions.setChecked(command, shown);
    grid.setShown(grid.shown().setFlag(line, shown));
    actions.bind(command, [&grid, &defaults, preference, line](bool on) {
        grid.setShown(grid.shown().setFlag(line, on));
        defaults.setValue(preference, on);
    });
}

void bindFullScreen(LibraryActions &actions, LibraryWindow &window)
{
    actions.bind(Command::FullScreen,
                 [&window](bool on) { window.setWindowState(window.windowState().setFlag(Qt::WindowFullScreen, on)); });
    QObject::connect(&window, &LibraryWindow::fullScreenChanged, &actions,
                     [&actions](bool on) { actions.setChecked(Command::FullScreen, on); });
}

}

void bindViewCommands(LibraryActions &actions, ThumbnailGridView &grid, LibraryWindow &window, UserDefaults &defaults)
{
    bindText(actions, grid, defaults, Command::ShowCaptions, WindowPreferences::kShowCaptions, TileLine::Caption);
    bindText(actions, grid, defaults, Command::ShowDates, WindowPreferences::kShowDates, TileLine::Date);
    bindText(actions, grid, defaults, Command::ShowFileNames, WindowPreferences::kShowFileNames, TileLine::FileName);

    bindFullScreen(actions, window);
    grid.setColumnCount(defaults.value(WindowPreferences::kColumnCount));
    actions.bind(Command::FewerColumns, [&grid](bool) { grid.addColumns(-1); });
    actions.bind(Command::MoreColumns, [&grid](bool) { grid.addColumns(1); });
    QObject::connect(&grid, &ThumbnailGridView::columnCountChanged, &grid,
                     [&defaults](int columns) { defaults.setValue(WindowPreferences::kColumnCount, columns); });
}
