#pragma once

#include "UndoRecorder.h"

#include <QString>

/// The name of a change as menus show it behind "Undo"; empty for what is no name.
[[nodiscard]] QString undoName(UndoName name);
