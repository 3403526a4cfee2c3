// What happens to unsaved changes and unfinished work when the window closes.

#include "EditCommands.h"
#include "ExportCommands.h"
#include "FileFinder.h"
#include "GiveAlert.h"
#include "ImportRunner.h"
#include "LibraryNotifications.h"
#include "LibraryWindow.h"
#include "PIWindowController.h"
#include "PhotoLibrary.h"
#include "PrintCommands.h"
#include "SeriesCommands.h"
#include "ThumbnailGridView.h"
#include "UserDefaults.h"
#include "WindowPreferences.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <utility>

bool PIWindowController::saveOrTell()
{
    if (SaveLibrary())
        return true;
    GiveAlert(tr("Save failed."), tr("I can't save the photo library. Your changes will be lost if you quit. Please "
                                     "check that your hard disk is not full."));
    return false;
}

bool PIWindowController::finishWork(IfBusy ifBusy)
{
    const auto mayStop = [ifBusy](bool isBusy, const QString &question, const QString &explanation) {
        return !isBusy || ifBusy == IfBusy::Stop ||
               GiveAlert(question, explanation, {tr("Stop"), tr("Cancel")}, /*escapeButton=*/1) == 0;
    };
    if (!mayStop(isImporting(), tr("Stop adding photos?"), tr("The photos found so far stay in the library.")) ||
        !mayStop(m_printCommands->isPrinting(), tr("Stop printing?"), tr("The photos are not printed yet.")) ||
        !mayStop(m_exportCommands->isExporting(), tr("Stop exporting?"), tr("The photos exported so far are kept.")) ||
        !mayStop(m_seriesCommands->isBusy(), tr("Stop changing files?"), tr("The files changed so far stay so.")))
        return false;
    m_importRunner->cancelAll();
    m_printCommands->cancel();
    m_exportCommands->cancel();
    m_seriesCommands->cancel();
    constexpr int kPatience = 5000; // milliseconds, should a disk not answer
    constexpr int kTurn = 20;
    const QDeadlineTimer deadline(kPatience);
    const auto isBusy = [this] {
        return isImporting() || m_printCommands->isPrinting() || m_exportCommands->isExporting() ||
               m_seriesCommands->isBusy() || m_editCommands->isBusy();
    };
    while (isBusy() && !deadline.hasExpired()) {
        QEventLoop turn;
        QTimer::singleShot(kTurn, &turn, &QEventLoop::quit);
        turn.exec(QEventLoop::ExcludeUserInputEvents);
    }
    return true;
}

void PIWindowController::keepDiscardedChanges()
{
    if (std::exchange(m_hasDiscardedChanges, false))
        m_library.setDirty(true);
}

bool PIWindowController::windowShouldClose()
{
    if (!finishWork(IfBusy::Ask))
        return false;
    m_thumbnailView->setFocus();                            // ends text editing elsewhere, which may change the library
    m_library.notifications().post(kNormalizeNotification); // so does a crop that is being drawn
    m_library.fileFinder().save();
    m_defaults.setData(QLatin1String(WindowPreferences::kGeometry), m_window->saveGeometry());
    if (!m_library.isDirty())
        return true;

    const int answer = GiveAlert(tr("Do you want to save the changes you made to the photo library?"),
                                 tr("Your changes will be lost if you don't save them."),
                                 {tr("Save"), tr("Cancel"), tr("Don't Save")}, /*escapeButton=*/1);
    if (answer == 1)
        return false;
    if (answer == 2) {
        m_library.setDirty(false);
        m_hasDiscardedChanges = true;
        return true;
    }
    return saveOrTell();
}
