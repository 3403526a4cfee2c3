#pragma once

#include "FilterCatalogue.h"
#include "PhotoEdits.h"

#include <QObject>

#include <memory>

class EffectSetMenu;
class LibraryActions;
class PIDetailController;
class QWidget;
class UserDefaults;
struct CommandState;

/// The commands on effects and effect sets.
class EffectCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent.
    EffectCommands(LibraryEditor &editor, UserDefaults &defaults, const FilterCatalogue &catalogue,
                   LibraryActions &actions, PIDetailController &detail, QWidget &window);

    [[nodiscard]] EffectSetMenu &effectSetsMenu() { return *m_effectSetsMenu; }
    /// Tells what the commands would act on.
    void describe(CommandState &state) const;
    /// Enables the sets when there are photos for them.
    void enable(const CommandState &state);

private:
    void editEffects();
    void applyEffectSet(const QString &name);
    void saveEffectSet();
    void manageEffectSets();

    LibraryEditor &m_editor;
    UserDefaults &m_defaults;
    const FilterCatalogue &m_catalogue;
    PIDetailController &m_detail;
    QWidget &m_window;
    PhotoEdits m_edits;
    EffectSetMenu *m_effectSetsMenu;
};
