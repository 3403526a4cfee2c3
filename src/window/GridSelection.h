#pragma once

#include "IndexSet.h"

/// What clicks, keys and a rubber band make of a selection. Ranges run in reading order from the anchor, the photo that
/// was last clicked alone. A value.
class GridSelection
{
public:
    enum class Mode {
        Replace, ///< this one alone
        Toggle,  ///< add it, or take it out
        Extend,  ///< all from the anchor to here
        Add,     ///< all from the anchor to here, beside what is selected
    };

    /// The selection after `index` was chosen.
    [[nodiscard]] IndexSet choose(const IndexSet &current, int index, Mode mode);
    /// -1 when there is none.
    [[nodiscard]] int anchor() const { return m_anchor; }
    void setAnchor(int index) { m_anchor = index; }

    /// A rubber band starts; what it will cover replaces, toggles or joins `current`.
    void beginBand(const IndexSet &current, Mode mode);
    /// The selection while the band covers `covered`.
    [[nodiscard]] IndexSet band(const IndexSet &covered) const;

private:
    int m_anchor = -1;
    IndexSet m_bandBase;
    Mode m_bandMode = Mode::Replace;
};

/// The one of `indexes` that is nearest to `index`; -1 when there is none.
[[nodiscard]] qint64 nearest(const IndexSet &indexes, qint64 index);
[[nodiscard]] IndexSet united(const IndexSet &one, const IndexSet &other);
/// What is in exactly one of the two.
[[nodiscard]] IndexSet difference(const IndexSet &one, const IndexSet &other);
