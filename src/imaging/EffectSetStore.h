#pragma once

#include "EffectChain.h"

#include <QMap>
#include <QStringList>

/// Effect chains under names. Belongs to the photo library and is saved with it; whoever changes it posts the
/// notification about it. Main thread.
using EffectSetStore = QMap<QString, EffectChain>;

/// The names as menus list them, sorted without regard to case.
[[nodiscard]] QStringList sortedEffectSetNames(const EffectSetStore &store);
