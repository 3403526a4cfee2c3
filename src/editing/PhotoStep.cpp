#include "PhotoStep.h"

namespace {

std::optional<qint64> nextSelected(const IndexSet &selected, qint64 reference)
{
    for (const auto &range : selected.ranges()) {
        if (range.last > reference)
            return std::max(range.first, reference + 1);
    }
    return selected.first();
}

std::optional<qint64> previousSelected(const IndexSet &selected, qint64 reference)
{
    const auto &ranges = selected.ranges();
    for (auto range = ranges.crbegin(); range != ranges.crend(); ++range) {
        if (range->first < reference)
            return std::min(range->last, reference - 1);
    }
    return selected.last();
}

}

std::optional<PhotoStep> PhotoStep::from(qint64 reference, qint64 photoCount, const IndexSet &selected,
                                         StepDirection direction)
{
    const bool isNext = direction == StepDirection::Next;
    PhotoStep step;
    if (selected.count() > 1) {
        step.index = *(isNext ? nextSelected(selected, reference) : previousSelected(selected, reference));
    } else if (photoCount > 0) {
        step.index = (reference + (isNext ? 1 : photoCount - 1)) % photoCount;
        step.becomesSelection = true;
    }
    if (photoCount <= 0 || step.index == reference || step.index >= photoCount)
        return std::nullopt;
    return step;
}

StepDirection PhotoStep::between(qint64 from, qint64 to, qint64 photoCount, const IndexSet &selected)
{
    for (const StepDirection direction : {StepDirection::Next, StepDirection::Previous}) {
        const auto step = PhotoStep::from(from, photoCount, selected, direction);
        if (step && step->index == to)
            return direction;
    }
    return from > to ? StepDirection::Previous : StepDirection::Next;
}

QList<qint64> PhotoStep::likely(qint64 reference, qint64 photoCount, const IndexSet &selected, StepDirection direction)
{
    QList<qint64> indexes;
    const auto add = [&](qint64 from, StepDirection way) {
        const auto step = PhotoStep::from(from, photoCount, selected, way);
        if (step && step->index != reference && !indexes.contains(step->index))
            indexes << step->index;
        return step ? step->index : from;
    };
    const bool isNext = direction == StepDirection::Next;
    const qint64 ahead = add(reference, direction);
    add(reference, isNext ? StepDirection::Previous : StepDirection::Next);
    add(ahead, direction);
    return indexes;
}
