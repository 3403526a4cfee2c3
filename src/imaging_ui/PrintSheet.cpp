#include "PrintSheet.h"

#include "CropSizes.h"
#include "PIPrintOptionVC.h"
#include "PrintInfo.h"
#include "PrintPreview.h"
#include "PrintSettings.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QDir>
#include <QLabel>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QStandardPaths>
#include <QToolButton>

PrintSheet::PrintSheet(const QList<PrintedPhoto> &photos, UserDefaults &defaults, PixelPool &pool, QWidget *parent)
    : QDialog(parent)
    , m_photos(photos)
    , m_defaults(defaults)
    , m_options(new PIPrintOptionVC(defaults, this))
    , m_preview(new PrintPreview(pool, this))
    , m_previous(new QToolButton(this))
    , m_next(new QToolButton(this))
    , m_position(new QLabel(this))
{
    setObjectName(QStringLiteral("PrintSheet"));
    setWindowTitle(tr("Print"));
    setWindowModality(Qt::WindowModal);
    auto *setup = new QPushButton(tr("Page Setup…"), this);
    setup->setAutoDefault(false);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton *print = buttons->addButton(tr("Print…"), QDialogButtonBox::AcceptRole);
    print->setDefault(true);
    connect(setup, &QPushButton::clicked, this, [this] {
        if (askForPageSetup(m_defaults, *this))
            updatePages();
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &PrintSheet::choosePrinter);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_options, &PIPrintOptionVC::changed, this, &PrintSheet::updatePages);

    auto *choices = new QVBoxLayout;
    choices->addWidget(m_options, 1);
    choices->addWidget(setup);
    auto *sides = new QHBoxLayout;
    sides->addWidget(makePreviewSide(), 1);
    sides->addLayout(choices);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(sides, 1);
    layout->addWidget(buttons);
    resize(760, 680);
    updatePages();
}

PrintSheet::~PrintSheet() = default;

QWidget *PrintSheet::makePreviewSide()
{
    auto *side = new QWidget(this);
    m_previous->setArrowType(Qt::LeftArrow);
    m_previous->setToolTip(tr("Previous page"));
    m_previous->setAccessibleName(m_previous->toolTip());
    m_next->setArrowType(Qt::RightArrow);
    m_next->setToolTip(tr("Next page"));
    m_next->setAccessibleName(m_next->toolTip());
    connect(m_previous, &QToolButton::clicked, this, [this] { m_preview->showPage(m_preview->page() - 1); });
    connect(m_next, &QToolButton::clicked, this, [this] { m_preview->showPage(m_preview->page() + 1); });
    connect(m_preview, &PrintPreview::pageChanged, this, &PrintSheet::showPosition);
    auto *pages = new QHBoxLayout;
    pages->addStretch();
    pages->addWidget(m_previous);
    pages->addWidget(m_position);
    pages->addWidget(m_next);
    pages->addStretch();
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_preview, 1);
    layout->addLayout(pages);
    return side;
}

PIPrintView PrintSheet::viewFor(const QList<PrintedPhoto> &photos, const QPageLayout &paper)
{
    const CropSize preset = kCropSizes.at(static_cast<size_t>(g_cropSizeIndex));
    const QSizeF page = paper.paintRect(QPageLayout::Point).size();
    return {photos, PrintLayout::on(page, g_printLayout, {preset.width, preset.height}, g_printInfo.scale),
            g_cropMarks};
}

void PrintSheet::updatePages()
{
    const QPageLayout &paper = g_printInfo.paper;
    m_preview->setPages(viewFor(m_photos, paper), paper.fullRect(QPageLayout::Point).size(),
                        paper.paintRect(QPageLayout::Point).topLeft());
}

void PrintSheet::showPosition()
{
    m_previous->setEnabled(m_preview->page() > 1);
    m_next->setEnabled(m_preview->page() < m_preview->totalPages());
    m_position->setText(tr("Page %1 of %2").arg(m_preview->page()).arg(m_preview->totalPages()));
}

namespace {

QString documentPath()
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    return (folder.exists() ? folder : QDir::home()).filePath(QStringLiteral("Tamsel Photo.pdf"));
}

}

void PrintSheet::choosePrinter()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(QStringLiteral("Tamsel Photo"));
    printer.setPageLayout(g_printInfo.paper);
    printer.setFromTo(1, m_preview->totalPages());
    printer.setPrintRange(QPrinter::AllPages);
    if (QPrinterInfo::availablePrinterNames().isEmpty())
        printer.setOutputFileName(documentPath()); // all that is left is to print into a document
    QPrintDialog dialog(&printer, this);
    dialog.setWindowModality(Qt::WindowModal);
    auto *options = new PIPrintOptionVC(m_defaults, &dialog);
    connect(options, &PIPrintOptionVC::changed, this, &PrintSheet::updatePages);
    connect(options, &PIPrintOptionVC::changed, m_options, &PIPrintOptionVC::refresh);
    dialog.setOptionTabs({options});
    if (dialog.exec() != QDialog::Accepted)
        return;
    m_job = PrintJob::from(printer, viewFor(m_photos, printer.pageLayout()).totalPages());
    accept();
}

bool PrintSheet::askForPageSetup(UserDefaults &defaults, QWidget &parent)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageLayout(g_printInfo.paper);
    QPageSetupDialog dialog(&printer, &parent);
    dialog.setWindowModality(Qt::WindowModal);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const QByteArray archive = archivedPrintInfo({printer.pageLayout(), g_printInfo.scale});
    g_printInfo = printInfoFromArchive(archive); // what the next launch will read
    defaults.setData(QLatin1String(kPrintInfo), archive);
    return true;
}
