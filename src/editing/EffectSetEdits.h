#pragma once

#include "EffectChain.h"

#include <QString>

class LibraryEditor;

/// Changes to the library's effect sets. Each is one undoable step, and everyone who lists the sets is told. Main
/// thread.
namespace EffectSetEdits {

enum class Outcome {
    Done,
    Refused, ///< could not be recorded, or there is no set of that name
    NoName,
    NoEffects,
    NameTaken,
};

/// A name as sets have it: on one line, without space around it.
[[nodiscard]] QString cleanName(const QString &name);
/// Stores the chain, in place of a set that has the name already.
Outcome save(LibraryEditor &editor, const QString &name, const EffectChain &chain);
/// A name that another set has is not taken away from it.
Outcome rename(LibraryEditor &editor, const QString &name, const QString &newName);
Outcome remove(LibraryEditor &editor, const QString &name);

}
