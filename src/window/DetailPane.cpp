#include "DetailPane.h"

#include <QEvent>
#include <QScrollArea>

#include <algorithm>

namespace {

/// Of the height, in hundredths.
constexpr int kLargestShareOfSections = 50;

}

DetailPane::DetailPane(QWidget *photo, QWidget *sections, QWidget *parent)
    : QSplitter(Qt::Vertical, parent)
    , m_scroller(new QScrollArea)
{
    m_scroller->setFrameShape(QFrame::NoFrame);
    m_scroller->setWidgetResizable(true);
    m_scroller->setWidget(sections);
    addWidget(photo);
    addWidget(m_scroller);
    setStretchFactor(0, 1);
    setStretchFactor(1, 0);
    setChildrenCollapsible(false);
    sections->installEventFilter(this);
    connect(this, &QSplitter::splitterMoved, this, [this] { m_dividerMoved = true; });
}

void DetailPane::resizeEvent(QResizeEvent *event)
{
    QSplitter::resizeEvent(event);
    place();
}

/// A section was opened or closed, or has more or less to tell.
bool DetailPane::eventFilter(QObject *object, QEvent *event)
{
    if (object == m_scroller->widget() && event->type() == QEvent::LayoutRequest)
        place();
    return QSplitter::eventFilter(object, event);
}

void DetailPane::place()
{
    if (m_dividerMoved)
        return;
    const int whole = height() - handleWidth();
    QWidget *sections = m_scroller->widget();
    const int needed = sections->hasHeightForWidth() ? sections->heightForWidth(m_scroller->viewport()->width())
                                                     : sections->sizeHint().height();
    const int given = std::min(needed, whole * kLargestShareOfSections / 100);
    setSizes({whole - given, given});
}
