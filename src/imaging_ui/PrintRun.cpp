#include "PrintRun.h"

#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QPrinter>

namespace {

constexpr double kPointsPerInch = 72;

/// A full disk is not told of by the printer.
bool isWhole(const QString &path)
{
    constexpr qint64 kTail = 64;
    QFile file(path);
    return file.open(QFile::ReadOnly) && (file.size() <= kTail || file.seek(file.size() - kTail)) &&
           file.readAll().contains("%%EOF");
}

/// On the worker. `begun` is told of each page with its place among all.
PrintRun::Outcome print(QPrinter &printer, const PIPrintView &view, const QList<int> &pages,
                        const std::atomic<bool> &cancelled, const std::function<void(int)> &begun)
{
    PrintRun::Outcome outcome;
    QPainter painter;
    if (pages.isEmpty() || !painter.begin(&printer))
        return outcome;
    const double scale = printer.resolution() / kPointsPerInch;
    for (qsizetype i = 0; i < pages.size() && !cancelled; ++i) {
        begun(static_cast<int>(i));
        if (i > 0 && !printer.newPage()) {
            printer.abort();
            return outcome;
        }
        painter.save();
        painter.scale(scale, scale);
        outcome.incompletePages += view.drawPage(painter, pages.at(i), cancelled) ? 0 : 1;
        painter.restore();
    }
    outcome.isCancelled = cancelled;
    if (outcome.isCancelled)
        printer.abort();
    outcome.isPrinted = painter.end() && !outcome.isCancelled && printer.printerState() != QPrinter::Error;
    const QString path = printer.outputFileName();
    if (path.isEmpty())
        return outcome;
    outcome.isPrinted = outcome.isPrinted && isWhole(path);
    if (!outcome.isPrinted && QFileInfo(path).isFile())
        static_cast<void>(QFile::remove(path)); // a part of a print is none
    return outcome;
}

}

QList<int> PrintRun::pagesFor(const QPrinter &printer, int totalPages)
{
    const bool isRange = printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0;
    const int first = isRange ? printer.fromPage() : 1;
    const int last = isRange ? std::min(printer.toPage(), totalPages) : totalPages;
    const int copies = printer.supportsMultipleCopies() ? 1 : std::max(printer.copyCount(), 1);
    QList<int> pages;
    if (printer.collateCopies()) {
        for (int copy = 0; copy < copies; ++copy) {
            for (int page = first; page <= last; ++page)
                pages << page;
        }
    } else {
        for (int page = first; page <= last; ++page)
            pages << QList<int>(copies, page);
    }
    if (printer.pageOrder() == QPrinter::LastPageFirst)
        std::reverse(pages.begin(), pages.end());
    return pages;
}

PrintRun::PrintRun(QObject *parent)
    : QObject(parent)
    , m_worker(QStringLiteral("hmphoto.print"), 1, DispatchQueue::AtEnd::LeaveBehind)
{}

PrintRun::~PrintRun()
{
    cancel();
}

void PrintRun::start(std::unique_ptr<QPrinter> printer, const PIPrintView &view)
{
    const std::shared_ptr<QPrinter> owned = std::move(printer);
    m_worker.async([owned, view, cancelled = m_cancelled, toHere = m_link.toHere()] {
        const QList<int> pages = pagesFor(*owned, view.totalPages());
        const int count = static_cast<int>(pages.size());
        const Outcome outcome = print(*owned, view, pages, *cancelled, [&](int number) {
            toHere([number, count](PrintRun &here) { Q_EMIT here.pageBegun(number, count); });
        });
        toHere([outcome](PrintRun &here) { Q_EMIT here.finished(outcome); });
    });
}
