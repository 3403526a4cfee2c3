#include "PrintJob.h"

#include <QPrinter>

#include <algorithm>

namespace {

/// A document holds its copies itself, which a printer makes.
QList<int> pagesOf(const QPrinter &printer, int totalPages)
{
    const bool isRange = printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0;
    const int first = isRange ? printer.fromPage() : 1;
    const int last = isRange ? std::min(printer.toPage(), totalPages) : totalPages;
    const bool isDocument = !printer.outputFileName().isEmpty();
    const int copies = isDocument ? std::max(printer.copyCount(), 1) : 1;
    const int inARow = printer.collateCopies() ? 1 : copies;
    QList<int> pages;
    for (int copy = 0; copy < copies / inARow; ++copy) {
        for (int page = first; page <= last; ++page)
            pages << QList<int>(inARow, page);
    }
    if (printer.pageOrder() == QPrinter::LastPageFirst)
        std::reverse(pages.begin(), pages.end());
    return pages;
}

QString mediaOf(const QPageSize &paper)
{
    if (paper.id() != QPageSize::Custom)
        return paper.key();
    const QSize points = paper.sizePoints();
    return QStringLiteral("Custom.%1x%2").arg(points.width()).arg(points.height());
}

PrintTicket::Sides sidesOf(QPrinter::DuplexMode duplex, QPageLayout::Orientation orientation)
{
    switch (duplex) {
    case QPrinter::DuplexLongSide:
        return PrintTicket::Sides::LongEdge;
    case QPrinter::DuplexShortSide:
        return PrintTicket::Sides::ShortEdge;
    case QPrinter::DuplexAuto:
        return orientation == QPageLayout::Landscape ? PrintTicket::Sides::ShortEdge : PrintTicket::Sides::LongEdge;
    case QPrinter::DuplexNone:
        break;
    }
    return PrintTicket::Sides::One;
}

}

PrintJob PrintJob::from(const QPrinter &printer, int totalPages)
{
    const QPageLayout paper = printer.pageLayout();
    return {paper,
            printer.resolution(),
            pagesOf(printer, totalPages),
            printer.outputFileName(),
            {printer.printerName(), printer.docName(), mediaOf(paper.pageSize()), std::max(printer.copyCount(), 1),
             printer.collateCopies(), sidesOf(printer.duplex(), paper.orientation()),
             printer.colorMode() == QPrinter::GrayScale}};
}
