#pragma once

class ThumbnailGridView;

/// What assistive tools see of the grid: a list whose items are the photos, made as they are asked for.
namespace AccessibleGrid {

/// Makes the grid's interface known; once is enough, more does no harm.
void install();
/// The photo with the keyboard cursor has the focus.
void announceFocus(ThumbnailGridView &view);
/// The selection changed, at the keyboard cursor or elsewhere.
void announceSelection(ThumbnailGridView &view);

}
