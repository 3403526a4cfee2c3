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
#include <QSpinBox>
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
    /// A document of all the pages, or a print on paper when there is no path.
    static PrintJob job(const QString &path, int pages)
    {
        PrintJob job;
        job.paper = {QPageSize(QPageSize::A5), QPageLayout::Landscape, QMarginsF(20, 20, 20, 20), QPageLayout::Point};
        job.file = path;
        job.ticket = {QStringLiteral("Laser"), QStringLiteral("Photos"), QStringLiteral("A5"), 2};
        for (int page = 1; page <= pages; ++page)
            job.pages << page;
        return job;
    }
    static PrintRun::Outcome outcomeOf(const PrintJob &job, const PIPrintView &view, bool cancels = false)
    {
        PrintRun run;
        std::optional<PrintRun::Outcome> outcome;
        QObject::connect(&run, &PrintRun::finished, &run, [&](const auto &result) { outcome = result; });
        QObject::connect(&run, &PrintRun::pageBegun, &run, [&] { cancels ? run.cancel() : void(); });
        run.start(job, view);
        [&] { QTRY_VERIFY_WITH_TIMEOUT(outcome, 60'000); }();
        return outcome.value_or(PrintRun::Outcome());
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

QString outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished() ? QString::fromUtf8(process.readAllStandardOutput()).simplified() : QString();
}

/// Stands in for the printing system's command: writes down how it was called, and takes the document with it.
struct FakeSpooler
{
    QTemporaryDir dir;
    const QByteArray before = qgetenv("PATH");

    explicit FakeSpooler(const QByteArray &ending)
    {
        QFile script(dir.filePath(QStringLiteral("lp")));
        if (!script.open(QFile::WriteOnly))
            return;
        const QByteArray folder = QFile::encodeName(dir.path());
        script.write("#!/bin/sh\necho \"$@\" > " + folder + "/call\nfor last; do :; done\ncp \"$last\" " + folder +
                     "/taken.pdf\n" + ending + "\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", folder + ':' + before);
    }
    ~FakeSpooler() { qputenv("PATH", before); }
    [[nodiscard]] QString taken() const { return dir.filePath(QStringLiteral("taken.pdf")); }
    [[nodiscard]] QByteArray call() const
    {
        QFile file(dir.filePath(QStringLiteral("call")));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
};

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

        // Clockwise: what was at the left is at the top.
        QImage twoColours(60, 80, QImage::Format_RGB32);
        twoColours.fill(Qt::blue);
        QPainter(&twoColours).fillRect(0, 0, 30, 80, Qt::red);
        const QString path = room.dir.filePath(QStringLiteral("two.png"));
        QVERIFY(twoColours.save(path));
        const QSizeF wide(720, 540);
        const QImage page = Darkroom::painted({{{{path, {}, {}, {}}, {}}}, PrintLayout::on(wide, 0, {}), false}, 1);
        QCOMPARE(page.pixelColor(360, 100), QColor(Qt::red));
        QCOMPARE(page.pixelColor(360, 440), QColor(Qt::blue));
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

    void aPrintHasItsPages_data()
    {
        QTest::addColumn<bool>("isOnPaper");
        QTest::newRow("in a document") << false;
        QTest::newRow("on paper") << true;
    }
    void aPrintHasItsPages()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("pdfinfo")).isEmpty())
            QSKIP("pdfinfo is not installed");
        QFETCH(bool, isOnPaper);
        const Darkroom room;
        const FakeSpooler spooler("exit 0");
        QList<PrintedPhoto> photos;
        for (int i = 0; i < 7; ++i)
            photos << room.photo(QStringLiteral("%1.png").arg(i), {2400, 1600}, Qt::green);
        const QString path = room.dir.filePath(QStringLiteral("out.pdf"));
        const PrintJob job = Darkroom::job(isOnPaper ? QString() : path, 4);
        const QSizeF page = job.paper.paintRect(QPageLayout::Point).size();
        const auto outcome = Darkroom::outcomeOf(job, {photos, PrintLayout::on(page, 2, {}), true});
        QVERIFY2(outcome.isPrinted && outcome.incompletePages == 0, qPrintable(outcome.reason));
        const QString printed = isOnPaper ? spooler.taken() : path;
        const QString facts = outputOf(QStringLiteral("pdfinfo"), {printed});
        QVERIFY2(facts.contains(QStringLiteral("Pages: 4 ")), qPrintable(facts));
        const QRegularExpression lying(QStringLiteral("Page size: 59[45]\\.?\\d* x (419\\.5\\d*|420) "));
        QVERIFY2(facts.contains(lying), qPrintable(facts));
        // As fine as the printer is: 300 to the inch.
        const QString images = outputOf(QStringLiteral("pdfimages"), {QStringLiteral("-list"), printed});
        QVERIFY2(images.contains(QRegularExpression(QStringLiteral(" (29\\d|30\\d) (29\\d|30\\d) "))),
                 qPrintable(images));
        if (isOnPaper)
            QVERIFY2(spooler.call().startsWith("-d Laser -t Photos -n 2 -o collate=true -o media=A5 -o sides=one-sided "
                                               "-- /"),
                     spooler.call());
    }

    void aPrintCanBeCancelledAndCanFail()
    {
        const Darkroom room;
        const FakeSpooler spooler("echo 'no such printer' >&2; exit 1");
        const PIPrintView view(QList<PrintedPhoto>(500, room.photo(QStringLiteral("a.png"), {30, 20}, Qt::green)),
                               PrintLayout::on(kPortrait, 0, {}), false);
        const QString path = room.dir.filePath(QStringLiteral("a.pdf"));
        for (const QString &target : {path, QString()}) {
            const auto cancelled = Darkroom::outcomeOf(Darkroom::job(target, 500), view, true);
            QVERIFY(cancelled.isCancelled && !cancelled.isPrinted);
        }
        QVERIFY(!QFile::exists(path) && spooler.call().isEmpty());
        const auto refused = Darkroom::outcomeOf(Darkroom::job({}, 1), view);
        QVERIFY(!refused.isPrinted && !refused.isCancelled);
        QCOMPARE(refused.reason, QStringLiteral("no such printer"));
        const auto failed =
            Darkroom::outcomeOf(Darkroom::job(room.dir.filePath(QStringLiteral("no/such/folder/a.pdf")), 1), view);
        QVERIFY(!failed.isPrinted && !failed.isCancelled && !failed.reason.isEmpty());
    }

    void pagesAreThoseThatTheDialogChose()
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(QStringLiteral("/tmp/a.pdf"));
        const auto pages = [&](int total) { return PrintJob::from(printer, total).pages; };
        QCOMPARE(pages(3), (QList<int>{1, 2, 3}));
        printer.setPrintRange(QPrinter::PageRange);
        printer.setFromTo(2, 9);
        QCOMPARE(pages(3), (QList<int>{2, 3}));
        QVERIFY(pages(1).isEmpty());
        printer.setCopyCount(2);
        QCOMPARE(pages(3), (QList<int>{2, 3, 2, 3}));
        printer.setCollateCopies(false);
        QCOMPARE(pages(3), (QList<int>{2, 2, 3, 3}));
        printer.setCopyCount(1);
        printer.setPageOrder(QPrinter::LastPageFirst);
        QCOMPARE(pages(3), (QList<int>{3, 2}));
    }

    void aSmallerScaleHoldsMore()
    {
        const Darkroom room;
        const PrintLayout half = PrintLayout::on(kPortrait, PrintLayout::kFillPage, {6, 4}, 0.5);
        QCOMPARE(half.photosPerPage, PrintLayout::on(kPortrait * 2, PrintLayout::kFillPage, {6, 4}).photosPerPage);
        QCOMPARE(PrintLayout::on(kPortrait, 0, {}, 0).page, kPortrait); // no scale is none
        const PIPrintView view({room.photo(QStringLiteral("a.png"), {60, 40}, Qt::red)}, half, false);
        QCOMPARE(inkedArea(Darkroom::painted(view, 1)).size(), QSize(144, 216)); // two by three inches, turned
    }

    void thePageSetUpIsKeptAndChecked()
    {
        const QPageLayout lying(QPageSize(QPageSize::A5), QPageLayout::Landscape, QMarginsF(20, 30, 40, 50),
                                QPageLayout::Point);
        const PrintInfo back = printInfoFromArchive(archivedPrintInfo({lying, 0.5}));
        QCOMPARE(back.paper.paintRect(QPageLayout::Point), lying.paintRect(QPageLayout::Point));
        QCOMPARE(back.paper.orientation(), QPageLayout::Landscape);
        QCOMPARE(back.scale, 0.5);
        QCOMPARE(printInfoFromArchive(archivedPrintInfo({lying, 1e9})).scale, 1);
        const PrintInfo usual = printInfoFromArchive({});
        QVERIFY(usual.paper.isValid() && usual.paper.paintRect(QPageLayout::Point).width() > 400);
        QByteArray bytes = archivedPrintInfo({lying, 1});
        for (const QByteArray &bad :
             {bytes.first(20), QByteArray(400, '\xff'), QByteArray(bytes).replace(4, 8, QByteArray(8, '\x7f'))})
            QVERIFY(printInfoFromArchive(bad) == usual);
    }

    void optionsAreStoredAtOnce()
    {
        const QTemporaryDir dir;
        UserDefaults defaults(dir.filePath(QStringLiteral("preferences.ini")));
        g_printLayout = 4;
        g_printInfo = printInfoFromArchive({});
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
        options.findChild<QSpinBox *>()->setValue(50);
        QCOMPARE(printInfoFromArchive(defaults.data(QLatin1String(kPrintInfo))).scale, 0.5);
        g_printLayout = 0;
        g_cropMarks = false;
        g_printInfo = {};
    }
};

REGISTER_TEST(TestPrinting)
#include "TestPrinting.moc"
