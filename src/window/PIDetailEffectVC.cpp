#include "PIDetailEffectVC.h"

#include "GeometryText.h"
#include "LibraryEditor.h"
#include "PIEffectUIManager.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"
#include "QVUndoManager.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QToolButton>

#include <utility>

namespace {

/// While a slider is dragged, the large photo and its thumbnail are not made anew more often.
constexpr int kChangeMilliseconds = 400;
constexpr QSize kPickerPicture(360, 240);

}

PIDetailEffectVC::PIDetailEffectVC(LibraryEditor &editor, QVUndoManager &undo, const FilterCatalogue &catalogue,
                                   const PIDetailController &controller, QWidget *parent)
    : PIDetailBaseVC(editor.library(), controller, parent)
    , m_undo(undo)
    , m_catalogue(catalogue)
    , m_none(new QLabel(tr("None"), this))
    , m_controls(new QWidget(this))
    , m_uiManager(new PIEffectUIManager(*m_controls, catalogue, *this))
    , m_buttons(new QHBoxLayout)
    , m_addButton(new QToolButton(this))
    , m_renderer(editor.library().thumbnails().pixelPool())
{
    m_uiManager->setIncludeCommonControls(true);
    m_none->setForegroundRole(QPalette::PlaceholderText);
    m_changeTimer.setSingleShot(true);
    m_changeTimer.setInterval(kChangeMilliseconds);
    connect(&m_changeTimer, &QTimer::timeout, this, &PIDetailEffectVC::showChangedPhoto);
    // What is changed after a slider was let go is a step of its own.
    connect(m_uiManager, &PIEffectUIManager::changeEnded, this, [this] { m_before = nullptr; });
    auto *menu = new QMenu(m_addButton);
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { showAddMenu(*menu); });
    m_addButton->setText(tr("Add"));
    m_addButton->setToolTip(tr("Add an effect to the photo"));
    m_addButton->setMenu(menu);
    m_addButton->setPopupMode(QToolButton::InstantPopup);
    m_buttons->addWidget(m_addButton);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 4, 12, 10);
    layout->addWidget(m_none);
    layout->addWidget(m_controls);
    layout->addLayout(m_buttons);
    selectionChanged();
}

void PIDetailEffectVC::addCommands(QAction &editEffects, QMenu &effectSets)
{
    auto *edit = new QToolButton(this);
    edit->setDefaultAction(&editEffects);
    edit->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto *sets = new QToolButton(this);
    sets->setDefaultAction(effectSets.menuAction()); // can be used when there are sets
    sets->setToolTip(tr("Give the selected photos the effects of a set"));
    sets->setPopupMode(QToolButton::InstantPopup);
    m_buttons->addWidget(edit);
    m_buttons->addWidget(sets);
    m_buttons->addStretch();
}

void PIDetailEffectVC::selectionChanged()
{
    const EffectChain chain = havePhoto() ? photo()->filterDicts() : EffectChain();
    if (m_uiManager->edits().photo() != photo()) {
        showChangedPhoto();
        m_uiManager->setPhoto(photo());
    }
    m_uiManager->setFilterUIFrom(chain);
    preparePickerPicture();
    m_addButton->setEnabled(havePhoto());
    m_controls->setVisible(!chain.isEmpty());
    m_none->setVisible(chain.isEmpty() && havePhoto());
}

/// Pickers show the photo without its effects, which may move what is in it.
void PIDetailEffectVC::preparePickerPicture()
{
    const bool isWanted = havePhoto() && !missingFile() && m_uiManager->hasPickers();
    const QString key = isWanted ? photo()->guid() + textFromRect(photo()->cropRect()) : QString();
    if (key == m_pictureOf)
        return;
    m_pictureOf = key;
    m_renderer.cancel();
    m_uiManager->setPicture({});
    if (!isWanted)
        return;
    PictureRecipe recipe = photo()->recipe(library().imageCache());
    recipe.chain = {};
    m_renderer.run([this, recipe](const std::atomic<bool> &cancelled) -> std::function<void()> {
        const Image image = recipe.open().shown;
        const QSize size = CenterRectangle(image.size(), kPickerPicture);
        return
            [this, picture = image.pixels(size, &cancelled).value_or(QImage())] { m_uiManager->setPicture(picture); };
    });
}

/// The categories that have filters, each with its filters.
void PIDetailEffectVC::showAddMenu(QMenu &menu)
{
    if (!menu.isEmpty())
        return;
    for (const FilterCatalogue::Category &category : m_catalogue.categories()) {
        if (category.filters.isEmpty())
            continue;
        QMenu *filters = menu.addMenu(category.displayName);
        for (const QString &name : category.filters) {
            QAction *action = filters->addAction(m_catalogue.description(name)->displayName);
            connect(action, &QAction::triggered, this, [this, tag = m_catalogue.tagForFilter(name)] {
                m_uiManager->edits().addFilterToPhoto(tag, EffectEdits::ShowError::Yes);
            });
        }
    }
}

/// Moving one slider after the other of the same effect is one step; everything else is a step of its own.
bool PIDetailEffectVC::setUndoForFilter(int filterTag, EffectChange change)
{
    const UndoData *newest = m_undo.dataForCurrentUndoAction();
    const bool goesOn = change == EffectChange::Value && filterTag == m_recordedFilter && newest && m_before &&
                        newest->photo == m_before && m_before->guid() == photo()->guid();
    if (goesOn)
        return true;
    if (!m_undo.setUndoAction(UndoAction::Photo, UndoName::Effects, {.container = {}, .photo = photo()}))
        return false;
    const UndoData *recorded = m_undo.dataForCurrentUndoAction();
    m_before = recorded ? recorded->photo : nullptr;
    m_recordedFilter = change == EffectChange::Value ? filterTag : -1;
    return true;
}

void PIDetailEffectVC::updatePhotoForFilterChange()
{
    m_changedPhoto = photo();
    if (!m_changeTimer.isActive())
        m_changeTimer.start();
}

void PIDetailEffectVC::updatePhotoForFilterSet()
{
    m_changedPhoto = photo();
    showChangedPhoto();
}

void PIDetailEffectVC::showChangedPhoto()
{
    m_changeTimer.stop();
    if (const auto changed = std::exchange(m_changedPhoto, nullptr))
        library().pictureChanged(*changed);
}
