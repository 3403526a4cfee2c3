#include "Decoder.h"
#include "PIPrintOptionVC.h"
#include "PIPrintView.h"
#include "PrintInfo.h"
#include "PrintLayout.h"
#include "PrintRun.h"
#include "PrintSettings.h"
#include "TestRunner.h"
#include "UserDefaults.h"

#include <QCheckBox>
#include <QImage>
#include <QPainter>
#include <QPrinter>
#include <QProcess>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

constexpr QSizeF kPortrait(540, 720);

/// Photos of one colour each in a folder of their own.
struct Darkroom
{
    QTemporaryDir dir;

    Darkroom() { Decoder::initialize(); }
    PrintedPhoto photo(const QString &name, QSize size, const QColor &color) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        const QString path = dir.filePath(name);
        image.save(path);
        return {{path, {}, {}, {}}, name};
    }
    /// A page at 72 dots to the inch.
    static QImage painted(const PIPrintView &view, int page, bool *isComplete = nullptr)
    {
        QImage image(view.pageSize().toSize(), QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        const std::atomic<bool> cancelled = false;
        const bool complete = view.drawPage(painter, page, cancelled);
        if (isComplete)
            *isComplete = complete;
        return image;
    }
    static std::unique_ptr<QPrinter> printer(const QString &path)
    {
        auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
        printer->setOutputFormat(QPrinter::PdfFormat);
        printer->setOutputFileName(path);
        printer->setPageLayout(
            {QPageSize(QPageSize::A5), QPageLayout::Landscape, QMarginsF(20, 20, 20, 20), QPageLayout::Point});
        return printer;
    }
};

/// Where the picture has another colour than the paper.
QRect inkedArea(const QImage &image)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != Qt::white)
                area |= QRect(x, y, 1, 1);
        }
    }
    return area;
}

QString pdfFacts(const QString &path)
{
    QProcess pdfinfo;
    pdfinfo.start(QStringLiteral("pdfinfo"), {path});
    return pdfinfo.waitForFinished() ? QString::fromUtf8(pdfinfo.readAllStandardOutput()).simplified() : QString();
}

}

/// Layouts of photos on paper, and pages as they come out.
class TestPrinting : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aLayoutHasItsColumnsAndRows_data()
    {
        QTest::addColumn<QSizeF>("page");
        QTest::addColumn<int>("layout");
        QTest::addColumn<QSizeF>("preset");
        QTest::addColumn<QString>("expected"); // columns x rows, photos per page, pages for 100 photos
        const auto row = [](const char *name, QSizeF page, int layout, const char *expected, QSizeF preset = {0, 0}) {
            QTest::newRow(name) << page << layout << preset << QString::fromLatin1(expected);
        };
        const QSizeF landscape = kPortrait.transposed();
        row("one", kPortrait, 1, "1x1 1 100");
        row("three", kPortrait, 3, "1x3 3 34");
        row("three lying", landscape, 3, "3x1 3 34");
        row("four", kPortrait, 4, "2x2 4 25");
        row("five", kPortrait, 5, "2x2 5 20");
        row("six", kPortrait, 6, "2x3 6 17");
        row("six lying", landscape, 6, "3x2 6 17");
        row("nine", kPortrait, 9, "3x3 9 12");
        row("nonsense", kPortrait, -7, "1x1 1 100");
        row("proof on letter", {559, 720}, PrintLayout::kProof, "5x6 30 4");
        row("proof lying", {720, 559}, PrintLayout::kProof, "8x6 48 3");
        row("proof on a stamp", {72, 30}, PrintLayout::kProof, "8x6 48 3");
        row("fill page", kPortrait, PrintLayout::kFillPage, "1x1 1 100");
        row("prints of 3.5 x 2", kPortrait, PrintLayout::kFillPage, "2x4 8 13", {3.5, 2});
        row("prints turned", {450, 540}, PrintLayout::kFillPage, "2x2 4 25", {3.5, 2});
        row("prints of 14 x 11", kPortrait, PrintLayout::kFillPage, "1x1 1 100", {14, 11});
        row("a preset for others", kPortrait, 4, "2x2 4 25", {3.5, 2});
    }
    void aLayoutHasItsColumnsAndRows()
    {
        QFETCH(QSizeF, page);
        QFETCH(int, layout);
        QFETCH(QSizeF, preset);
        const PrintLayout made = PrintLayout::on(page, layout, preset);
        QTEST(QStringLiteral("%1x%2 %3 %4")
                  .arg(made.columnCount)
                  .arg(made.rowCount)
                  .arg(made.photosPerPage)
                  .arg(made.totalPages(100)),
              "expected");
        QCOMPARE(made.totalPages(0), 0);
        // Every photo of a page has a cell of its own on it.
        for (int place = 0; place < made.photosPerPage; ++place) {
            const QRectF cell = made.cell(place);
            QVERIFY(cell.contains(made.photoArea(place)) && made.photoArea(place).height() > 0);
            QVERIFY(QRectF(QPointF(), page).adjusted(-0.01, -0.01, 0.01, 0.01).contains(cell));
            for (int other = 0; other < place; ++other)
                QVERIFY(!cell.adjusted(0.01, 0.01, -0.01, -0.01).intersects(made.cell(other)));
        }
    }

    void aPhotoIsTurnedWhenThatMakesItLarger()
    {
        const Darkroom room;
        const auto print = [&](QSize size, int layout, QSizeF preset = {0, 0}) {
            const PIPrintView view({room.photo(QStringLiteral("a.png"), size, Qt::blue)},
                                   PrintLayout::on(kPortrait, layout, preset), false);
            return inkedArea(Darkroom::painted(view, 1)).size();
        };
        QCOMPARE(print({80, 60}, 0), QSize(540, 720));
        QCOMPARE(print({60, 80}, 0), QSize(540, 720));
        QCOMPARE(print({60, 60}, 0), QSize(540, 540));
        QCOMPARE(print({60, 80}, 0, {6, 4}), QSize(384, 288)); // turned into a print of six by four inches
    }

    void proofsHaveTextAndMissingFilesTheirNames()
    {
        const Darkroom room;
        QList<PrintedPhoto> photos{
            room.photo(QStringLiteral("a.png"), {60, 40}, Qt::red),
            {{room.dir.filePath(QStringLiteral("gone.png")), {}, {}, {}}, QStringLiteral("gone.png")}};
        const PrintLayout layout = PrintLayout::on(kPortrait, PrintLayout::kProof, {});
        bool isComplete = true;
        const QImage page = Darkroom::painted({photos, layout, false}, 1, &isComplete);
        QVERIFY(!isComplete);
        QCOMPARE(page.pixelColor(layout.photoArea(0).center().toPoint()), QColor(Qt::red));
        QVERIFY(!inkedArea(page.copy(layout.textArea(0).toRect())).isEmpty());
        QVERIFY(!inkedArea(page.copy(layout.cell(1).toRect())).isEmpty());
        QVERIFY(inkedArea(page.copy(layout.cell(2).toRect())).isEmpty());
    }

    void cropMarksStandBesideThePhoto()
    {
        const Darkroom room;
        const QList<PrintedPhoto> photos{room.photo(QStringLiteral("a.png"), {60, 40}, Qt::red)};
        const PrintLayout layout = PrintLayout::on(kPortrait, 4, {});
        const QRect plain = inkedArea(Darkroom::painted({photos, layout, false}, 1));
        const QRect marked = inkedArea(Darkroom::painted({photos, layout, true}, 1));
        QVERIFY(marked.contains(plain) && marked.width() > plain.width() && marked.height() > plain.height());
    }

    void aPrintHasItsPages()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdfinfo")).isEmpty())
            QSKIP("pdfinfo is not installed");
        const Darkroom room;
        QList<PrintedPhoto> photos;
        for (int i = 0; i < 7; ++i)
            photos << room.photo(QStringLiteral("%1.png").arg(i), {300, 200}, Qt::green);
        const QString path = room.dir.filePath(QStringLiteral("out.pdf"));
        auto printer = Darkroom::printer(path);
        const QSizeF page = printer->pageLayout().paintRect(QPageLayout::Point).size();
        PrintRun run;
        QSignalSpy begun(&run, &PrintRun::pageBegun);
        PrintRun::Outcome outcome;
        int ended = 0;
        connect(&run, &PrintRun::finished, this, [&](const PrintRun::Outcome &result) {
            outcome = result;
            ++ended;
        });
        run.start(std::move(printer), {photos, PrintLayout::on(page, 2, {}), true});
        QTRY_COMPARE(ended, 1);
        QVERIFY(outcome.isPrinted && outcome.incompletePages == 0);
        QCOMPARE(begun.size(), 4);
        const QString facts = pdfFacts(path);
        QVERIFY2(facts.contains(QStringLiteral("Pages: 4 ")), qPrintable(facts));
        const QRegularExpression lying(QStringLiteral("Page size: 59[45]\\.?\\d* x (419\\.5\\d*|420) "));
        QVERIFY2(facts.contains(lying), qPrintable(facts));
    }

    void aPrintCanBeCancelledAndCanFail()
    {
        const Darkroom room;
        const QList<PrintedPhoto> photos(500, room.photo(QStringLiteral("a.png"), {30, 20}, Qt::green));
        const auto outcomeOf = [&](const QString &path, bool cancels) {
            PrintRun run;
            std::optional<PrintRun::Outcome> outcome;
            connect(&run, &PrintRun::finished, &run, [&](const PrintRun::Outcome &result) { outcome = result; });
            connect(&run, &PrintRun::pageBegun, &run, [&] { cancels ? run.cancel() : void(); });
            run.start(Darkroom::printer(path), {photos, PrintLayout::on(kPortrait, 0, {}), false});
            [&] { QTRY_VERIFY_WITH_TIMEOUT(outcome, 60'000); }();
            return outcome.value_or(PrintRun::Outcome());
        };
        const PrintRun::Outcome cancelled = outcomeOf(room.dir.filePath(QStringLiteral("a.pdf")), true);
        QVERIFY(cancelled.isCancelled && !cancelled.isPrinted);
        QVERIFY(!QFile::exists(room.dir.filePath(QStringLiteral("a.pdf"))));
        const PrintRun::Outcome failed = outcomeOf(room.dir.filePath(QStringLiteral("no/such/folder/a.pdf")), false);
        QVERIFY(!failed.isPrinted && !failed.isCancelled);
    }

    void pagesAreThoseThatTheDialogChose()
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        QCOMPARE(PrintRun::pagesFor(printer, 3), (QList<int>{1, 2, 3}));
        printer.setPrintRange(QPrinter::PageRange);
        printer.setFromTo(2, 9);
        QCOMPARE(PrintRun::pagesFor(printer, 3), (QList<int>{2, 3}));
        QVERIFY(PrintRun::pagesFor(printer, 1).isEmpty());
        printer.setPageOrder(QPrinter::LastPageFirst);
        QCOMPARE(PrintRun::pagesFor(printer, 3), (QList<int>{3, 2}));
    }

    void thePageSetUpIsKeptAndChecked()
    {
        const QPageLayout lying(QPageSize(QPageSize::A5), QPageLayout::Landscape, QMarginsF(20, 30, 40, 50),
                                QPageLayout::Point);
        const QPageLayout back = printInfoFromArchive(archivedPrintInfo(lying));
        QCOMPARE(back.paintRect(QPageLayout::Point), lying.paintRect(QPageLayout::Point));
        QCOMPARE(back.orientation(), QPageLayout::Landscape);
        const QPageLayout usual = printInfoFromArchive({});
        QVERIFY(usual.isValid() && usual.paintRect(QPageLayout::Point).width() > 400);
        QByteArray bytes = archivedPrintInfo(lying);
        for (const QByteArray &bad :
             {bytes.first(20), QByteArray(400, '\xff'), QByteArray(bytes).replace(4, 8, QByteArray(8, '\x7f'))})
            QCOMPARE(printInfoFromArchive(bad), usual);
    }

    void optionsAreStoredAtOnce()
    {
        const QTemporaryDir dir;
        UserDefaults defaults(dir.filePath(QStringLiteral("preferences.ini")));
        g_printLayout = 4;
        PIPrintOptionVC options(defaults);
        QStringList names;
        for (auto *button : options.findChildren<QRadioButton *>()) {
            names << button->text();
            QCOMPARE(button->isChecked(), button->text() == u"4 per page");
        }
        options.findChild<QRadioButton *>()->click();
        QCOMPARE(names.join(u'|'), QStringLiteral("Proof|Fill page|2 per page|3 per page|4 per page|6 per page|"
                                                  "9 per page|12 per page"));
        options.findChild<QCheckBox *>()->click();
        QCOMPARE(defaults.value(kPrintLayout), -1);
        QCOMPARE(g_printLayout, -1);
        QVERIFY(defaults.value(kCropMarks) && g_cropMarks);
        g_printLayout = 0;
        g_cropMarks = false;
    }
};

REGISTER_TEST(TestPrinting)
#include "TestPrinting.moc"
