#include "ScreenshotRun.h"

#include "LibraryWindow.h"
#include "LogString.h"
#include "PIAppController.h"
#include "PIWindowController.h"
#include "PhotoLibrary.h"

#include <QCoreApplication>
#include <QPixmap>
#include <QTimer>

namespace {

constexpr int kLookEveryMilliseconds = 100;
/// So many looks in a row must find nothing going on.
constexpr int kQuietLooks = 15;
constexpr int kMaxLooks = 6000;

}

ScreenshotRun::ScreenshotRun(PIAppController &controller, const QString &path, QObject *parent)
    : QObject(parent)
    , m_controller(controller)
    , m_path(path)
    , m_timer(new QTimer(this))
{
    connect(m_timer, &QTimer::timeout, this, &ScreenshotRun::look);
    m_timer->start(kLookEveryMilliseconds);
}

void ScreenshotRun::look()
{
    const bool busy = m_controller.windowController().isImporting() || m_controller.isSearching() ||
                      m_controller.library().thumbnails().pendingJobs() > 0;
    m_quietLooks = busy ? 0 : m_quietLooks + 1;
    if (m_quietLooks >= kQuietLooks || ++m_looks >= kMaxLooks)
        shoot(busy);
}

void ScreenshotRun::shoot(bool busy)
{
    m_timer->stop();
    if (busy)
        LogString("Not everything was there for the screenshot %@", m_path);
    const bool written = m_controller.windowController().window().grab().save(m_path);
    if (!written)
        LogString("Can't write screenshot %@", m_path);
    const bool saved = m_controller.windowController().SaveLibrary();
    QCoreApplication::exit(written && saved && !busy ? 0 : 1);
}
