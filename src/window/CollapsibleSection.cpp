#include "CollapsibleSection.h"

#include <QBoxLayout>
#include <QToolButton>

CollapsibleSection::CollapsibleSection(const QString &title, QWidget *content, QWidget *parent)
    : QWidget(parent)
    , m_header(new QToolButton(this))
    , m_content(content)
{
    QFont font = m_header->font();
    font.setBold(true);
    m_header->setFont(font);
    m_header->setText(title);
    m_header->setToolTip(tr("Show or hide this section"));
    m_header->setAccessibleName(title);
    m_header->setAutoRaise(true);
    m_header->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_header->setIconSize(QSize(10, 10));
    m_header->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // the pane may be narrower than a title

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_header);
    layout->addWidget(m_content);
    showState();
    connect(m_header, &QToolButton::clicked, this, [this] { setOpen(!isOpen()); });
}

bool CollapsibleSection::isOpen() const
{
    return !m_content->isHidden();
}

void CollapsibleSection::setOpen(bool open)
{
    if (open == isOpen())
        return;
    m_content->setVisible(open);
    showState();
    Q_EMIT openChanged(open);
}

void CollapsibleSection::showState()
{
    m_header->setArrowType(isOpen() ? Qt::DownArrow : Qt::RightArrow);
    m_header->setAccessibleDescription(isOpen() ? tr("Open") : tr("Folded away"));
}
