#pragma once

#include "IndexSet.h"

#include <optional>

enum class StepDirection { Previous, Next };

/// Where the commands for the next and the previous photo lead.
struct PhotoStep
{
    qint64 index = 0;
    bool becomesSelection = false; ///< else the selection stays and the detail pane walks through it

    /// With one photo selected (or none) the neighbour of `reference`, with several the neighbour among them; both ways
    /// around the ends. Nothing when there is nowhere to go but `reference` itself.
    [[nodiscard]] static std::optional<PhotoStep> from(qint64 reference, qint64 photoCount, const IndexSet &selected,
                                                       StepDirection direction);
};
