#include "FileSystemCalls.h"
#include "LibrarySupport.h"
#include "PhotoExport.h"
#include "TestRunner.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include <cerrno>
#include <optional>
#include <unistd.h>

Q_DECLARE_METATYPE(ExportSettings)

namespace {

/// A folder with photos in it, and an empty one beside them.
struct Darkroom
{
    QTemporaryDir dir{QDir::tempPath() + QStringLiteral("/Abzüge %1 XXXXXX")};
    QString photos = dir.filePath(QStringLiteral("photos"));
    QString target = dir.filePath(QStringLiteral("to here"));

    Darkroom()
    {
        QDir().mkpath(photos);
        QDir().mkpath(target);
    }
    QString photo(const QString &name) const { return photos + QLatin1Char('/') + name; }
    ExportedPhoto add(const QString &fileName, QSize size = {1500, 1000}) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(QColor(200, 120, 40));
        image.save(photo(fileName));
        return {{photo(fileName), {}, {}, {}}, QFileInfo(fileName).completeBaseName()};
    }
    QStringList names() const { return QDir(target).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
};

using Watch = std::function<void(PhotoExport &)>;

/// What the export came to; nothing when it took too long. `watch` may interfere at every step, and whenever the source
/// files are asked for.
std::optional<ExportOutcome> exported(
    const ExportOrder &order, const Watch &watch = [](PhotoExport &) {},
    const std::function<QStringList(PhotoExport &)> &sourceFiles = [](PhotoExport &) { return QStringList(); })
{
    std::optional<ExportOutcome> result;
    PhotoExport run;
    QObject::connect(&run, &PhotoExport::progressed, &run, [&] { watch(run); });
    QObject::connect(&run, &PhotoExport::finished, &run, [&](const ExportOutcome &outcome) { result = outcome; });
    run.start(order, [&] { return sourceFiles(run); });
    return QTest::qWaitFor([&] { return result.has_value(); }, 60'000) ? result : std::nullopt;
}

const Watch ignored = [](PhotoExport &) {};

std::function<QStringList(PhotoExport &)> given(const QStringList &files)
{
    return [files](PhotoExport &) { return files; };
}

/// Takes no byte as long as it lives.
struct FullDisk
{
    FullDisk()
    {
        fileSystemCalls().write = [](int, const void *, std::size_t) -> ssize_t {
            errno = ENOSPC;
            return -1;
        };
    }
    ~FullDisk() { fileSystemCalls() = m_before; }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    FileSystemCalls m_before = fileSystemCalls();
};

/// What a program prints; nothing when it fails.
std::optional<QString> printed(const QStringList &command)
{
    QProcess process;
    process.start(command.first(), command.mid(1));
    const bool ran = process.waitForFinished(60'000) && process.exitCode() == 0;
    return ran ? std::optional(QString::fromUtf8(process.readAllStandardOutput())) : std::nullopt;
}

}

/// Exports of photos, looked at with other programs.
class TestPhotoExport : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesWhatWasChosen_data()
    {
        QTest::addColumn<ExportSettings>("settings");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("command"); ///< the path follows
        QTest::addColumn<QStringList>("expected");
        const auto add = [](const char *row, ExportSettings settings, const char *name, const char *command,
                            const QStringList &expected) {
            QTest::newRow(row) << settings << QString::fromLatin1(name)
                               << QString::fromLatin1(command).split(QLatin1Char('|')) << expected;
        };
        const char *notes = "exiftool|-a|-G1|-s|-n";
        const QString moment = QStringLiteral("DateTimeOriginal +: 2020:02:29 13:14:15");
        const QString profile = QStringLiteral("\\[ICC-header\\] +ColorSpaceData +: RGB");
        add("JPEG", {0, 2, 0.7}, "IMG.jpg", "identify|-format|%m %wx%h %[jpeg:sampling-factor]",
            {QStringLiteral("JPEG 1000x666 2x2,1x1,1x1")});
        add("JPEG of quality 9", {0, 0, 0.9}, "IMG.jpg", "identify|-format|%m %wx%h %[jpeg:sampling-factor]",
            {QStringLiteral("JPEG 1500x1000 1x1,1x1,1x1")});
        add("PNG", {2, 4, 1}, "IMG.png", "identify|-format|%m %wx%h", {QStringLiteral("PNG 300x200")});
        add("TIFF, compressed", {3, 3, 1}, "IMG.tiff", "tiffinfo",
            {QStringLiteral("Image Width: 600 Image Length: 400"), QStringLiteral("Compression Scheme: LZW")});
        add("TIFF", {3, 1, 0}, "IMG.tiff", "tiffinfo",
            {QStringLiteral("Image Width: 1500 Image Length: 1000"), QStringLiteral("Compression Scheme: None")});
        add("PDF", {1, 3, 1}, "IMG.pdf", "pdfinfo",
            {QStringLiteral("Pages: +1\n"), QStringLiteral("Page size: +600 x 400 pts")});
        add("notes in a JPEG", {0, 4, 1}, "IMG.jpg", notes,
            {moment, QStringLiteral("Artist +: Zoë"), QStringLiteral("Copyright +: © Zoë"), profile});
        for (const auto &[row, format, name] :
             {std::tuple("notes in a PNG", 2, "IMG.png"), {"notes in a TIFF", 3, "IMG.tiff"}})
            add(row, {format, 4, 1}, name, notes,
                {moment, QStringLiteral("\\[IFD0\\] +Artist +: Zoë"), QStringLiteral("Creator +: Zoë"),
                 QStringLiteral("Rights +: © Zoë"), profile});
        add("notes in a PDF", {1, 4, 1}, "IMG.pdf", notes, {moment, QStringLiteral("Rights +: © Zoë")});
    }
    void writesWhatWasChosen()
    {
        QFETCH(QStringList, command);
        QFETCH(QStringList, expected);
        if (QStandardPaths::findExecutable(command.first()).isEmpty())
            QSKIP(qPrintable(command.first() + QStringLiteral(" is not here")));
        const Darkroom room;
        QFETCH(ExportSettings, settings);
        const ExportOrder order{{room.add(QStringLiteral("IMG.jpg"))}, room.target, {}, settings};
        if (command.first() == QLatin1String("exiftool"))
            QVERIFY(printed({QStringLiteral("exiftool"), QStringLiteral("-q"), QStringLiteral("-overwrite_original"),
                             QStringLiteral("-DateTimeOriginal=2020:02:29 13:14:15"), QStringLiteral("-Artist=Zoë"),
                             QStringLiteral("-Copyright=© Zoë"), QStringLiteral("-GPSLatitude=51.5"),
                             QStringLiteral("-GPSLatitudeRef=N"), QStringLiteral("-Model=Box"),
                             room.photo(QStringLiteral("IMG.jpg"))}));
        const auto outcome = exported(order);
        QVERIFY(outcome && outcome->failures.isEmpty());
        QFETCH(QString, name);
        QCOMPARE(room.names(), QStringList(name));
        QCOMPARE(outcome->bytes, QFileInfo(outcome->written.value(0)).size());
        const auto report = printed(command + outcome->written);
        QVERIFY(report);
        for (const QString &text : expected)
            QVERIFY2(report->contains(QRegularExpression(text)), qPrintable(text + u" is not in:\n" + *report));
        QVERIFY2(!report->contains(QRegularExpression(QStringLiteral("GPSLatitude|\\bModel +:"))), qPrintable(*report));
    }

    void refusesFilesOfTheLibrary_data()
    {
        QTest::addColumn<QString>("path"); ///< in the folder of the photos
        QTest::addColumn<bool>("isRefused");
        QTest::newRow("the file itself") << "a.jpg" << true;
        QTest::newRow("another spelling") << "../photos/./a.jpg" << true;
        QTest::newRow("a link") << "link.jpg" << true;
        QTest::newRow("through a linked folder") << "../linked/a.jpg" << true;
        QTest::newRow("another name of the file") << "hard.jpg" << true;
        QTest::newRow("what the extension makes of it") << "a.jpeg" << true;
        QTest::newRow("the place of a missing file") << "missing.jpg" << true;
        QTest::newRow("the place of a missing file, linked") << "../linked/missing.jpg" << true;
        QTest::newRow("a file of somebody else's") << "other.jpg" << false;
        QTest::newRow("a new file") << "new.jpg" << false;
    }
    void refusesFilesOfTheLibrary()
    {
        const Darkroom room;
        const ExportedPhoto photo = room.add(QStringLiteral("a.jpg"));
        room.add(QStringLiteral("other.jpg"), {10, 10});
        const QByteArray source = contentOf(photo.recipe.path);
        QVERIFY(QFile::link(room.photo(QStringLiteral("a.jpg")), room.photo(QStringLiteral("link.jpg"))));
        QVERIFY(QFile::link(room.photos, room.dir.filePath(QStringLiteral("linked"))));
        QVERIFY(::link(QFile::encodeName(photo.recipe.path).constData(),
                       QFile::encodeName(room.photo(QStringLiteral("hard.jpg"))).constData()) == 0);
        QFETCH(QString, path);
        const QStringList files{room.dir.filePath(QStringLiteral("linked/missing.jpg")), photo.recipe.path};
        const auto outcome = exported({{photo}, {}, room.photo(path), {0, 4, 0.7}}, ignored, given(files));
        QVERIFY(outcome);
        QTEST(outcome->isRefused, "isRefused");
        QCOMPARE(contentOf(photo.recipe.path), source);
        QCOMPARE(contentOf(room.photo(QStringLiteral("hard.jpg"))), source);
        QCOMPARE(outcome->written.size(), outcome->isRefused ? 0 : 1);
        QVERIFY(outcome->failures.isEmpty());
        if (!outcome->isRefused)
            QCOMPARE(QImage(room.photo(path)).size(), QSize(300, 200));
    }

    void findsFreeNamesAndGoesOnAfterFailures()
    {
        const Darkroom room;
        const ExportedPhoto small = room.add(QStringLiteral("Same.png"), {30, 20});
        ExportedPhoto large = room.add(QStringLiteral("other.jpg"));
        large.name = QStringLiteral("same");
        const ExportedPhoto missing{{room.photo(QStringLiteral("gone.jpg")), {}, {}, {}}, QStringLiteral("gone")};
        ExportedPhoto broken = missing;
        broken.recipe.path = room.photo(QStringLiteral("broken.jpg"));
        QFile text(broken.recipe.path);
        QVERIFY(text.open(QFile::WriteOnly) && text.write("no picture") > 0);
        text.close();
        QVERIFY(QFile::copy(broken.recipe.path, room.target + QStringLiteral("/same.jpg")));

        const auto outcome = exported({{small, missing, large, broken, small}, room.target, {}, {0, 0, 0.7}});
        QVERIFY(outcome);
        QCOMPARE(room.names(), QStringList({QStringLiteral("Same-2.jpg"), QStringLiteral("Same.jpg"),
                                            QStringLiteral("same-1.jpg"), QStringLiteral("same.jpg")}));
        const auto sizes = [&] {
            QList<QSize> list;
            for (const QString &path : outcome->written)
                list << QImage(path).size();
            return list;
        };
        QCOMPARE(sizes(), QList<QSize>({{30, 20}, {1500, 1000}, {30, 20}}));
        QCOMPARE(contentOf(room.target + QStringLiteral("/same.jpg")), QByteArray("no picture"));
        QCOMPARE(outcome->failures.size(), 2);
        QCOMPARE(outcome->failures.first().reason, QStringLiteral("The file of the photo is missing."));
        QVERIFY(!outcome->failures.last().reason.isEmpty());

        const auto besideMissing =
            exported({{small}, room.photos, {}, {0, 0, 0.7}}, ignored, given({room.photo(QStringLiteral("same.JPG"))}));
        QCOMPARE(besideMissing.value_or(ExportOutcome()).written,
                 QStringList(room.photo(QStringLiteral("Same-1.jpg"))));
        const auto unwritten = exported({{small}, room.dir.filePath(QStringLiteral("no folder")), {}, {}});
        QVERIFY(unwritten && !unwritten->failures.isEmpty());
        QVERIFY(unwritten->failures.first().reason.contains(QStringLiteral("No such file")));
    }

    void tellsOfPhotosThatAreNotAsTheyShouldBe()
    {
        const Darkroom room;
        const ExportedPhoto cut = room.add(QStringLiteral("cut.jpg"));
        QVERIFY(QFile::resize(cut.recipe.path, QFileInfo(cut.recipe.path).size() / 2));
        const ExportedPhoto whole = room.add(QStringLiteral("whole.jpg"), {30, 20});
        const auto outcome = exported({{cut, whole}, room.target, {}, {0, 0, 0.7}});
        QVERIFY(outcome && outcome->failures.isEmpty());
        QCOMPARE(outcome->written.size(), 2);
        QCOMPARE(outcome->reservations.size(), 1);
        QCOMPARE(outcome->reservations.at(0).name, QStringLiteral("cut"));
    }

    void leavesNothingOnAFullDisk()
    {
        const Darkroom room;
        const ExportedPhoto photo = room.add(QStringLiteral("a.jpg"));
        const QString path = room.target + QStringLiteral("/b.jpg");
        QVERIFY(QFile::copy(photo.recipe.path, path));
        const QByteArray before = contentOf(path);
        const FullDisk disk;
        for (const ExportOrder &order :
             {ExportOrder{{photo}, room.target, {}, {0, 4, 0.7}}, ExportOrder{{photo}, {}, path, {0, 4, 0.7}}}) {
            const auto outcome = exported(order);
            QVERIFY(outcome && outcome->written.isEmpty());
            QCOMPARE(outcome->failures.size(), 1);
            QVERIFY(outcome->failures.first().reason.contains(qt_error_string(ENOSPC)));
            QCOMPARE(contentOf(path), before);
            QCOMPARE(room.names(), QStringList(QStringLiteral("b.jpg")));
        }
    }

    void leavesRoomBehindLongNames()
    {
        const Darkroom room;
        const QString eacute = QStringLiteral("e\u0301"); // three bytes, one character
        const ExportedPhoto photo = room.add(eacute.repeated(83) + QStringLiteral(".jpg"), {30, 20});
        const QString name = PhotoExport::nameFor(photo.recipe.path);
        QCOMPARE(name, eacute.repeated(name.size() / 2));
        QVERIFY(name.size() > 100);
        constexpr int tiff = 3;
        const auto outcome = exported({{{photo.recipe, name}, {photo.recipe, name}}, room.target, {}, {tiff, 0, 1}});
        QVERIFY(outcome && outcome->failures.isEmpty());
        QCOMPARE(outcome->written.size(), 2);
    }

    void looksAgainBeforeItReplaces_data()
    {
        QTest::addColumn<bool>("isCancelled"); ///< else the file becomes one of the library
        QTest::newRow("the file came into the library meanwhile") << false;
        QTest::newRow("cancelled") << true;
    }
    void looksAgainBeforeItReplaces()
    {
        QFETCH(bool, isCancelled);
        const Darkroom room;
        const ExportedPhoto photo = room.add(QStringLiteral("a.jpg"));
        const QString path = room.target + QStringLiteral("/b.jpg");
        QVERIFY(QFile::copy(photo.recipe.path, path));
        const QByteArray before = contentOf(path);
        int asked = 0;
        const auto outcome = exported({{photo}, {}, path, {0, 4, 0.7}}, ignored, [&](PhotoExport &run) {
            const bool isLater = ++asked > 1;
            if (isLater && isCancelled)
                run.cancel();
            return isLater && !isCancelled ? QStringList(path) : QStringList();
        });
        QVERIFY(outcome && outcome->written.isEmpty() && outcome->failures.isEmpty());
        QCOMPARE(outcome->isCancelled, isCancelled);
        QCOMPARE(outcome->isRefused, !isCancelled);
        QCOMPARE(contentOf(path), before);
        QCOMPARE(room.names(), QStringList(QStringLiteral("b.jpg")));
    }

    void endsWhenCancelled()
    {
        const Darkroom room;
        QList<ExportedPhoto> photos(200, room.add(QStringLiteral("a.jpg")));
        photos.first().recipe.path = room.photo(QStringLiteral("gone.jpg"));
        const auto outcome = exported({photos, room.target, {}, {0, 0, 0.7}}, [](PhotoExport &run) { run.cancel(); });
        QVERIFY(outcome && outcome->isCancelled);
        QVERIFY(outcome->written.size() < photos.size());
        QVERIFY(outcome->failures.size() <= 1); // whether it came to that of the first; none by being given up
        QCOMPARE(room.names().size(), outcome->written.size()); // nothing half done
    }
};

REGISTER_TEST(TestPhotoExport)
#include "TestPhotoExport.moc"
