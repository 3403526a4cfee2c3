#pragma once

#include "PaneDividers.h"

#include <QSplitter>

class UserDefaults;

/// The three panes of the library window and the dividers between them, which are remembered across runs. When the
/// window changes its width, the detail pane takes the change; without it the thumbnails do.
class PaneSplitter final : public QSplitter
{
    Q_OBJECT

public:
    /// `defaults` outlives the splitter, which takes the panes over.
    PaneSplitter(UserDefaults &defaults, const QList<QWidget *> &panes, QWidget *parent = nullptr);

    /// Puts the dividers where they were in the last run; from then on they are remembered.
    void setInitialSplit();
    /// Shows or hides the detail pane; the dividers come back where they were.
    void setDetailShown(bool shown);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    [[nodiscard]] QWidget *detail() const { return widget(2); }
    void place();
    void takeUpDrag();
    void save(const PaneDividers &dividers);

    UserDefaults &m_defaults;
    PaneDividers m_wanted; ///< where the user put them; a narrow window shows them elsewhere for a while
    bool m_splitSet = false;
};
