#pragma once

#include "LostFileSearch.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QStatusBar;

/// In the status bar: how the search for moved files gets on, with a way to end it, and at last what it came to. A
/// search that takes but a moment shows its result only.
class LostFileProgress final : public QWidget
{
    Q_OBJECT

public:
    /// Puts itself into the bar, which owns it.
    explicit LostFileProgress(QStatusBar &bar);

    void walking(qsizetype found, qsizetype total);
    void finished(const LostFileSearch::Summary &summary);

Q_SIGNALS:
    void cancelled();

private:
    QStatusBar &m_bar;
    QLabel *m_text;
    QProgressBar *m_progress;
    QTimer m_delay;
};
