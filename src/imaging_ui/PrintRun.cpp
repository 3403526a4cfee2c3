#include "PrintRun.h"

#include "StandardFolders.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTemporaryFile>

#include <functional>
#include <numeric>

namespace {

/// What a run tells while it paints, in numbers of pages and of photos.
struct Progress
{
    std::function<void(int number)> pageBegun;
    std::function<void()> photoDrawn;
};

constexpr double kPointsPerInch = 72;

/// False when the document could not be painted.
bool paint(QIODevice &document, const PrintJob &job, const PIPrintView &view, const std::atomic<bool> &cancelled,
           const Progress &progress, PrintRun::Outcome &outcome)
{
    QPdfWriter writer(&document);
    writer.setTitle(job.ticket.title);
    writer.setResolution(job.resolution);
    writer.setPageLayout(job.paper);
    QPainter painter;
    if (job.pages.isEmpty() || !painter.begin(&writer))
        return false;
    const double scale = job.resolution / kPointsPerInch;
    for (qsizetype i = 0; i < job.pages.size() && !cancelled; ++i) {
        progress.pageBegun(static_cast<int>(i));
        if (i > 0 && !writer.newPage())
            return false;
        painter.save();
        painter.scale(scale, scale);
        outcome.incompletePages += view.drawPage(painter, job.pages.at(i), cancelled, progress.photoDrawn) ? 0 : 1;
        painter.restore();
    }
    return painter.end();
}

PrintRun::Outcome printToFile(const PrintJob &job, const PIPrintView &view, const std::atomic<bool> &cancelled,
                              const Progress &progress)
{
    PrintRun::Outcome outcome;
    QSaveFile file(job.file);
    const bool isPainted = file.open(QSaveFile::WriteOnly) && paint(file, job, view, cancelled, progress, outcome);
    outcome.isCancelled = cancelled;
    outcome.isPrinted = isPainted && !outcome.isCancelled && file.commit();
    if (file.error() != QFileDevice::NoError)
        outcome.reason = file.errorString();
    return outcome;
}

/// The document may be large, and the folder for temporary files is often in memory.
QString placeForDocuments()
{
    const auto cache = applicationCacheFolder();
    const QString place = cache.value_or(QString()) + QStringLiteral("/Print");
    return cache && QDir().mkpath(place) ? place : QDir::tempPath();
}

/// Those of runs that did not come to their end.
void removeOldDocuments(const QString &place)
{
    constexpr int days = 1;
    if (place == QDir::tempPath())
        return;
    const QFileInfoList files = QDir(place).entryInfoList({QStringLiteral("*.pdf")}, QDir::Files | QDir::NoSymLinks);
    for (const QFileInfo &file : files) {
        if (file.lastModified().daysTo(QDateTime::currentDateTime()) >= days)
            QFile::remove(file.filePath());
    }
}

PrintRun::Outcome printOnPaper(const PrintJob &job, const PIPrintView &view, const std::atomic<bool> &cancelled,
                               const Progress &progress)
{
    PrintRun::Outcome outcome;
    const QString place = placeForDocuments();
    removeOldDocuments(place);
    QTemporaryFile file(place + QStringLiteral("/XXXXXX.pdf"));
    const bool isPainted = file.open() && paint(file, job, view, cancelled, progress, outcome) && file.flush() &&
                           file.error() == QFileDevice::NoError;
    outcome.isCancelled = cancelled;
    if (file.error() != QFileDevice::NoError)
        outcome.reason = file.errorString();
    else if (isPainted && !outcome.isCancelled)
        outcome.isPrinted = spoolPdf(file.fileName(), job.ticket, cancelled, outcome.reason);
    outcome.isCancelled = cancelled && !outcome.isPrinted;
    return outcome;
}

}

PrintRun::PrintRun(QObject *parent)
    : QObject(parent)
    , m_worker(QStringLiteral("hmphoto.print"), 1, DispatchQueue::AtEnd::LeaveBehind)
{}

PrintRun::~PrintRun()
{
    cancel();
}

void PrintRun::start(const PrintJob &job, const PIPrintView &view)
{
    m_worker.async([job, view, cancelled = m_cancelled, toHere = m_link.toHere()] {
        const int pages = static_cast<int>(job.pages.size());
        const int photos = std::accumulate(job.pages.cbegin(), job.pages.cend(), 0,
                                           [&](int sum, int page) { return sum + view.photosOn(page); });
        int drawn = 0;
        const Progress progress{
            [&](int page) { toHere([page, pages](PrintRun &here) { Q_EMIT here.pageBegun(page, pages); }); },
            [&] { toHere([drawn = ++drawn, photos](PrintRun &here) { Q_EMIT here.photosDrawn(drawn, photos); }); }};
        const auto print = job.file.isEmpty() ? printOnPaper : printToFile;
        toHere([outcome = print(job, view, *cancelled, progress)](PrintRun &here) { Q_EMIT here.finished(outcome); });
    });
}
