#pragma once

#include "IndexSet.h"

#include <QList>

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
    /// Which way somebody went who came from one photo to another.
    [[nodiscard]] static StepDirection between(qint64 from, qint64 to, qint64 photoCount, const IndexSet &selected);
    /// Where the next steps will probably lead after one in that direction, the likeliest first; none of them twice.
    [[nodiscard]] static QList<qint64> likely(qint64 reference, qint64 photoCount, const IndexSet &selected,
                                              StepDirection direction);
};
