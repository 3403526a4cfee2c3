#include "RenamePreview.h"

#include "InBackground.h"
#include "RenamePlanModel.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QTreeView>

RenamePreview::RenamePreview(QWidget *parent)
    : QWidget(parent)
    , m_model(new RenamePlanModel(this))
    , m_table(new QTreeView(this))
    , m_summary(new QLabel(tr("Looking at the folders…"), this))
    , m_worker(QStringLiteral("hmphoto.renamePlan"), 1, DispatchQueue::AtEnd::LeaveBehind)
{
    m_table->setModel(m_model);
    m_table->setRootIsDecorated(false);
    m_table->setUniformRowHeights(true); // there may be very many
    m_table->setAlternatingRowColors(true);
    m_table->setAllColumnsShowFocus(true);
    m_table->setTextElideMode(Qt::ElideMiddle);
    m_table->setAccessibleName(tr("New names"));
    setFocusProxy(m_table);
    QHeaderView &header = *m_table->header();
    header.setStretchLastSection(true);
    header.resizeSection(RenamePlanModel::OldName, 220);
    header.resizeSection(RenamePlanModel::NewName, 220);
    m_summary->setTextFormat(Qt::PlainText);
    m_summary->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table, 1);
    layout->addWidget(m_summary);
}

const RenamePlan &RenamePreview::plan() const
{
    return m_model->plan();
}

void RenamePreview::showPlan(const RenameSettings &settings, const QStringList &paths, const QStringList &reserved)
{
    m_wanted = {settings, paths, reserved};
    if (!m_isPlanning)
        work();
}

void RenamePreview::work()
{
    m_isPlanning = true;
    m_planned = m_wanted;
    inBackground(
        m_worker, this,
        [question = m_planned] {
            return RenamePlan(question.settings, question.paths, FolderNames({}, question.reserved));
        },
        [this](const RenamePlan &plan) { show(plan); });
}

void RenamePreview::show(const RenamePlan &plan)
{
    m_isPlanning = false;
    m_model->setPlan(plan);
    m_summary->setText(m_model->summary());
    if (const int row = m_model->firstObstacle(); row >= 0)
        m_table->scrollTo(m_model->index(row, 0));
    if (m_wanted != m_planned)
        work();
    else
        Q_EMIT becameUpToDate();
}
