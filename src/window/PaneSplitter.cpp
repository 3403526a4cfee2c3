#include "PaneSplitter.h"

#include "WindowPreferences.h"

PaneSplitter::PaneSplitter(UserDefaults &defaults, const QList<QWidget *> &panes, QWidget *parent)
    : QSplitter(Qt::Horizontal, parent)
    , m_defaults(defaults)
{
    for (QWidget *pane : panes)
        addWidget(pane);
    widget(0)->setMinimumWidth(PaneDividers::kMinOutline);
    widget(0)->setMaximumWidth(PaneDividers::kMaxOutline);
    widget(1)->setMinimumWidth(PaneDividers::kMinThumbnails);
    detail()->setMinimumWidth(PaneDividers::kMinDetail);
    setChildrenCollapsible(false);
    setHandleWidth(1);
    connect(this, &QSplitter::splitterMoved, this, &PaneSplitter::takeUpDrag);
}

void PaneSplitter::setInitialSplit()
{
    const int split0 = m_defaults.value(WindowPreferences::kSplit0);
    m_wanted.outline = split0 > 0 ? split0 : WindowPreferences::kSplit0.fallback;
    const int split1 = m_defaults.value(WindowPreferences::kSplit1);
    m_wanted.thumbnails = split1 > 0 ? split1 : m_wanted.outline + WindowPreferences::kSplit1Offset;
    m_splitSet = true;
    setDetailShown(m_defaults.value(WindowPreferences::kShowDetail));
}

void PaneSplitter::setDetailShown(bool shown)
{
    widget(1)->setMaximumWidth(shown ? PaneDividers::kMaxThumbnails : QWIDGETSIZE_MAX);
    detail()->setVisible(shown);
    m_defaults.setValue(WindowPreferences::kShowDetail, shown);
    place();
}

void PaneSplitter::resizeEvent(QResizeEvent *event)
{
    QSplitter::resizeEvent(event);
    place();
}

void PaneSplitter::place()
{
    if (!m_splitSet)
        return;
    refresh(); // a pane that was hidden just now takes its divider along
    const PaneDividers fitted = m_wanted.fitted(width(), handleWidth());
    setSizes(detail()->isHidden() ? fitted.sizesWithoutDetail(width(), handleWidth())
                                  : fitted.sizes(width(), handleWidth()));
    save(fitted);
}

void PaneSplitter::takeUpDrag()
{
    if (!m_splitSet)
        return;
    const QList<int> panes = sizes();
    m_wanted.outline = panes[0];
    if (!detail()->isHidden())
        m_wanted.thumbnails = panes[0] + handleWidth() + panes[1];
    save(m_wanted);
}

/// Without the detail pane there is no second divider.
void PaneSplitter::save(const PaneDividers &dividers)
{
    m_defaults.setValue(WindowPreferences::kSplit0, dividers.outline);
    if (!detail()->isHidden())
        m_defaults.setValue(WindowPreferences::kSplit1, dividers.thumbnails);
}
