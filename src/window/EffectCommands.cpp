#include "EffectCommands.h"

#include "CommandState.h"
#include "EffectSetEdits.h"
#include "EffectSetMenu.h"
#include "EffectSetsDialog.h"
#include "GiveAlert.h"
#include "LibraryActions.h"
#include "PIDetailController.h"
#include "PIDetailEffectVC.h"
#include "PIEffectDialog.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"

#include <QAction>

EffectCommands::EffectCommands(LibraryEditor &editor, UserDefaults &defaults, const FilterCatalogue &catalogue,
                               LibraryActions &actions, PIDetailController &detail, QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_defaults(defaults)
    , m_catalogue(catalogue)
    , m_detail(detail)
    , m_window(window)
    , m_edits(editor)
    , m_effectSetsMenu(new EffectSetMenu(editor.library(), editor.library().notifications(), actions, window))
{
    actions.bind(Command::EditEffects, [this](bool) { editEffects(); });
    actions.bind(Command::ClearEffects, [this](bool) {
        if (!m_edits.clearEffects())
            Beep();
    });
    actions.bind(Command::SaveEffectSet, [this](bool) { saveEffectSet(); });
    actions.bind(Command::ManageEffectSets, [this](bool) { manageEffectSets(); });
    connect(m_effectSetsMenu, &EffectSetMenu::chosen, this, &EffectCommands::applyEffectSet);
    detail.effectController().addCommands(*actions.action(Command::EditEffects), *m_effectSetsMenu);
}

void EffectCommands::describe(CommandState &state) const
{
    const auto &photo = m_detail.photo();
    state.isPhotoCurrent = photo != nullptr;
    state.hasPhotoEffects = photo && !photo->filterDicts().isEmpty();
    state.hasEffectSets = !m_editor.library().effectSets().isEmpty();
}

void EffectCommands::enable(const CommandState &state)
{
    m_effectSetsMenu->setUsable(state.selectedPhotos > 0);
}

void EffectCommands::editEffects()
{
    if (m_detail.photo())
        PIEffectDialog::editPhotoEffects(m_editor, m_catalogue, m_defaults, m_detail.photo(), m_window);
}

void EffectCommands::applyEffectSet(const QString &name)
{
    if (!m_edits.applyEffectSet(name))
        Beep();
}

void EffectCommands::saveEffectSet()
{
    const auto photo = m_detail.photo();
    const QString name = photo ? askForEffectSetName(m_editor, m_window) : QString();
    if (!name.isEmpty() && EffectSetEdits::save(m_editor, name, photo->filterDicts()) != EffectSetEdits::Outcome::Done)
        Beep();
}

void EffectCommands::manageEffectSets()
{
    EffectSetsDialog(m_editor, m_catalogue, &m_window).exec();
}
