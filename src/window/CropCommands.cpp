#include "CropCommands.h"

#include "CommandState.h"
#include "CropSizes.h"
#include "GiveAlert.h"
#include "LibraryActions.h"
#include "PIDetailController.h"
#include "PIDetailCropVC.h"
#include "PIImageView.h"
#include "PIPhoto.h"
#include "ThumbnailGridView.h"
#include "WindowPreferences.h"

#include <QAction>
#include <QActionGroup>
#include <QLocale>
#include <QMenu>

#include <utility>

CropCommands::CropCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions,
                           ThumbnailGridView &grid, PIDetailController &detail, QWidget &window)
    : QObject(&window)
    , m_defaults(defaults)
    , m_actions(actions)
    , m_grid(grid)
    , m_view(detail.photoView())
    , m_edits(editor)
    , m_sizesMenu(makeSizesMenu(window))
{
    actions.bind(Command::Crop, [this](bool) { crop(); });
    actions.bind(Command::ClearCrop, [this](bool) { clearCrop(); });
    actions.bind(Command::SelectUncropped, [this](bool) { selectUncropped(); });
    connect(&m_view, &PIImageView::cropChanged, this, &CropCommands::cropChanged);
    connect(&m_view, &PIImageView::stateChanged, this, &CropCommands::changed);
    detail.cropController().addCommands(*actions.action(Command::Crop), *m_sizesMenu);
}

QMenu *CropCommands::makeSizesMenu(QWidget &window)
{
    auto *menu = new QMenu(tr("Crop Si&ze"), &window);
    auto *group = new QActionGroup(menu);
    const QLocale locale;
    for (int index = 0; index < static_cast<int>(kCropSizes.size()); ++index) {
        const auto [width, height] = kCropSizes.at(static_cast<size_t>(index));
        const QString name = tr("%1 × %2").arg(locale.toString(width), locale.toString(height));
        QAction *action = menu->addAction(index == 0 ? tr("Free") : name);
        action->setCheckable(true);
        action->setChecked(index == g_cropSizeIndex);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, index] { setCropSize(index); });
    }
    return menu;
}

void CropCommands::describe(CommandState &state) const
{
    state.canCropPhoto = m_view.canCrop();
    state.isCropping = m_view.isCropping();
    state.isCropSizeChosen = g_cropSizeIndex != 0;
}

void CropCommands::showTitle(const CommandState &state)
{
    m_actions.action(Command::Crop)->setText(state.cropTitle());
}

void CropCommands::crop()
{
    if (m_view.isCropping())
        m_view.cancelCrop();
    else
        startCrop();
}

void CropCommands::startCrop()
{
    if (!m_view.canCrop())
        return;
    Q_EMIT largePhotoWanted();
    m_view.startCrop();
    m_view.setFocus(); // which takes the keys of cropping
}

void CropCommands::setCropSize(int index)
{
    g_cropSizeIndex = index;
    m_defaults.setValue(WindowPreferences::kCropSize, index);
    if (index == 0)
        m_view.cancelCrop();
    else
        startCrop();
    Q_EMIT changed();
}

void CropCommands::clearCrop()
{
    m_view.cancelCrop();
    if (!m_edits.clearCrop())
        Beep();
}

void CropCommands::selectUncropped()
{
    m_grid.selectWhere([](const PIPhoto &photo) { return photo.cropRect().isEmpty(); });
}

/// Drags change nothing for the commands. After the end the grid has the keys again.
void CropCommands::cropChanged()
{
    if (std::exchange(m_wasCropping, m_view.isCropping()) == m_view.isCropping())
        return;
    if (!m_wasCropping && m_view.hasFocus())
        m_grid.setFocus();
    Q_EMIT changed();
}
