#include "LostFileProgress.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds kDelay(400);
constexpr int kResultMilliseconds = 30'000;
constexpr int kBarWidth = 140;

}

LostFileProgress::LostFileProgress(QStatusBar &bar)
    : QWidget(&bar)
    , m_bar(bar)
    , m_text(new QLabel(this))
    , m_progress(new QProgressBar(this))
{
    auto *cancel = new QPushButton(tr("Cancel"), this);
    cancel->setToolTip(tr("Stop looking for moved files. Those not found yet stay marked as missing"));
    cancel->setAccessibleName(tr("Stop looking for moved files"));
    connect(cancel, &QPushButton::clicked, this, &LostFileProgress::cancelled);
    cancel->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_progress->setFixedWidth(kBarWidth);
    m_progress->setTextVisible(false);
    m_progress->setAccessibleName(tr("Moved files found"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(6, 0, 0, 0);
    row->addWidget(m_text);
    row->addWidget(m_progress);
    row->addWidget(cancel);
    row->addStretch(1);
    m_delay.setSingleShot(true);
    m_delay.setInterval(kDelay);
    connect(&m_delay, &QTimer::timeout, this, [this] {
        m_bar.clearMessage();
        show();
    });
    bar.addWidget(this);
    hide();
}

void LostFileProgress::walking(qsizetype found, qsizetype total)
{
    m_text->setText(tr("Looking for moved files… %L1 of %L2 found").arg(found).arg(total));
    m_progress->setRange(0, static_cast<int>(total));
    m_progress->setValue(static_cast<int>(found));
    if (!isVisible() && !m_delay.isActive())
        m_delay.start();
}

void LostFileProgress::finished(const LostFileSearch::Summary &summary)
{
    m_delay.stop();
    hide();
    if (summary.found == 0 && summary.missing == 0 && !summary.cancelled && !summary.timedOut)
        return;
    QString text = tr("Moved files found: %L1.").arg(summary.found);
    if (summary.missing > 0)
        text += QStringLiteral(" ") + tr("Still missing: %L1.").arg(summary.missing);
    if (summary.cancelled)
        text += QStringLiteral(" ") + tr("The search was cancelled.");
    else if (summary.timedOut)
        text += QStringLiteral(" ") + tr("The search ended before it had looked everywhere: it took too long.");
    m_bar.showMessage(text, kResultMilliseconds);
}
