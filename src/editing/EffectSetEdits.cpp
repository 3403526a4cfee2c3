#include "EffectSetEdits.h"

#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"

namespace {

using EffectSetEdits::Outcome;

/// Replaces the store whole.
Outcome change(LibraryEditor &editor, const EffectSetStore &sets)
{
    if (!editor.recorder().setUndoAction(UndoAction::EffectSets, UndoName::EffectSets, {}))
        return Outcome::Refused;
    editor.library().effectSets() = sets;
    editor.library().notifications().post(kEffectSetsNotification);
    return Outcome::Done;
}

}

QString EffectSetEdits::cleanName(const QString &name)
{
    return name.simplified();
}

EffectSetEdits::Outcome EffectSetEdits::save(LibraryEditor &editor, const QString &name, const EffectChain &chain)
{
    const QString clean = cleanName(name);
    if (clean.isEmpty())
        return Outcome::NoName;
    if (chain.isEmpty())
        return Outcome::NoEffects;
    EffectSetStore sets = editor.library().effectSets();
    if (sets.contains(clean) && sets.value(clean) == chain)
        return Outcome::Done;
    sets.insert(clean, chain);
    return change(editor, sets);
}

EffectSetEdits::Outcome EffectSetEdits::rename(LibraryEditor &editor, const QString &name, const QString &newName)
{
    const QString clean = cleanName(newName);
    EffectSetStore sets = editor.library().effectSets();
    if (clean.isEmpty())
        return Outcome::NoName;
    if (!sets.contains(name))
        return Outcome::Refused;
    if (clean == name)
        return Outcome::Done;
    if (sets.contains(clean))
        return Outcome::NameTaken;
    sets.insert(clean, sets.take(name));
    return change(editor, sets);
}

EffectSetEdits::Outcome EffectSetEdits::remove(LibraryEditor &editor, const QString &name)
{
    EffectSetStore sets = editor.library().effectSets();
    return sets.remove(name) > 0 ? change(editor, sets) : Outcome::Refused;
}
