#pragma once

#include "PrintSpooler.h"

#include <QList>
#include <QPageLayout>
#include <QString>

class QPrinter;

/// What a print dialog was told: which pages go where. A plain value.
struct PrintJob
{
    /// As the dialog left the printer. `totalPages` are all there are.
    [[nodiscard]] static PrintJob from(const QPrinter &printer, int totalPages);

    QPageLayout paper;
    int resolution = 300; ///< dots per inch
    QList<int> pages;     ///< counted from 1
    QString file;         ///< the PDF document to write; empty for a printer
    PrintTicket ticket;
};
