#include "RenamePlan.h"
#include "TestRunner.h"

#include <QTest>

using Style = RenameSettings::Style;

namespace {

QString nameOf(const QString &path)
{
    return path.section(u'/', -1);
}

/// Told as "old > new +sidecar>new", with a sign before what something stands in the way of; files that stay are left
/// out.
QString told(const RenamePlan &plan)
{
    static const QStringList signs{QString(),
                                   QStringLiteral("?"),
                                   QStringLiteral("&"),
                                   QStringLiteral("!"),
                                   QStringLiteral("!!"),
                                   QStringLiteral("lost "),
                                   QStringLiteral("missing ")};
    QStringList lines;
    for (const RenamePlan::Step &step : plan.steps()) {
        if (step.newPath.isEmpty())
            continue;
        QString line = (step.isMovedBefore ? QStringLiteral("=") : signs.at(static_cast<int>(step.obstacle))) +
                       nameOf(step.oldPath) + QStringLiteral(" > ") + step.newPath.mid(3);
        for (const RenamePlan::Move &sidecar : step.sidecars)
            line += QStringLiteral(" +") + nameOf(sidecar.from) + QStringLiteral(">") + nameOf(sidecar.to);
        if (step.meetsSidecar)
            line += QStringLiteral(" ?sidecar");
        lines << line;
    }
    return lines.join(QStringLiteral(", "));
}

}

/// What many files are going to be named.
class TestRenamePlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void filesGetTheirNames_data()
    {
        QTest::addColumn<QStringList>("folder"); ///< all names in it
        QTest::addColumn<QStringList>("files");  ///< those to be renamed
        QTest::addColumn<std::function<void(RenameSettings &)>>("change");
        QTest::addColumn<QString>("plan");
        using Change = std::function<void(RenameSettings &)>;
        const auto row = [](const char *name, const char *folder, const char *files, const Change &change,
                            const char *plan) {
            QString expected = QString::fromUtf8(plan);
            expected.replace(QChar(0xa0), u' ');
            QTest::newRow(name) << QString::fromUtf8(folder).split(u' ') << QString::fromUtf8(files).split(u' ')
                                << change << expected;
        };
        const auto prefixes = [](const char *from, const char *to) {
            return [=](RenameSettings &settings) {
                settings.oldPrefix = QString::fromUtf8(from);
                settings.newPrefix = QString::fromUtf8(to);
            };
        };
        const auto renumber = [](qint64 from) {
            return [=](RenameSettings &settings) {
                settings.style = Style::Renumber;
                settings.renumberFrom = from;
            };
        };
        const auto extension = [](const char *text) {
            return [=](RenameSettings &settings) {
                settings.style = Style::Extension;
                settings.extension = QString::fromUtf8(text);
            };
        };
        const auto names = [](const QByteArray &prefix, std::optional<qint64> from = {}) {
            return [=](RenameSettings &settings) {
                settings.style = Style::NewNames;
                settings.prefix = QString::fromUtf8(prefix);
                settings.completeFrom = from;
            };
        };
        const QByteArray longPrefix(250, 'x');
        row("a prefix is replaced where there is one", "IMG_1.jpg DSC_2.jpg", "IMG_1.jpg DSC_2.jpg",
            prefixes("IMG", "Trip"), "IMG_1.jpg > Trip_1.jpg");
        row("nobody has the prefix", "a.jpg", "a.jpg", prefixes("x", "y"), "");
        row("only the case of a prefix changes", "img1.jpg", "img1.jpg", prefixes("img", "IMG"), "");
        row("numbers go on after the largest", "IMG_0012.jpg IMG_0099.jpg IMG_0100.jpg", "IMG_0012.jpg IMG_0099.jpg",
            renumber(1), "IMG_0012.jpg > IMG_0101.jpg, IMG_0099.jpg > IMG_0102.jpg");
        row("numbers start where they are told", "a7.jpg b.png", "a7.jpg b.png", renumber(9999),
            "a7.jpg > a9999.jpg, b.png > b10000.png");
        row("a number too large to count", "a99999999999999999999.jpg", "a99999999999999999999.jpg", renumber(1),
            "a99999999999999999999.jpg > a1000000000000000000.jpg");
        row("new names", "a.jpg b.JPG", "a.jpg b.JPG", names("Trip"), "a.jpg > Trip0001.jpg, b.JPG > Trip0002.JPG");
        row("new names after those there are", "a.jpg Trip0007.png Trip12x.jpg", "a.jpg", names("Trip", 3),
            "a.jpg > Trip0008.jpg");
        row("new names from a number on", "a.jpg Trip0007.png", "a.jpg", names("Trip", 50), "a.jpg > Trip0050.jpg");
        row("another extension", "a.jpeg b.JPG c", "a.jpeg b.JPG c", extension("jpg"), "a.jpeg > a.jpg, c > c.jpg");
        row("what is there clashes", "a.jpeg a.jpg b.jpeg", "a.jpeg b.jpeg", extension("jpg"),
            "!a.jpeg > a.jpg, b.jpeg > b.jpg");
        row("what has made room does not", "IMG1.jpg I1.jpg", "I1.jpg IMG1.jpg", prefixes("I", "J"),
            "I1.jpg > J1.jpg, IMG1.jpg > JMG1.jpg");
        row("two of one name", "a.jpeg a.tiff", "a.jpeg a.tiff", extension("jpg"), "a.jpeg > a.jpg, !a.tiff > a.jpg");
        row("no name leads elsewhere", "a1.jpg b", "a1.jpg", prefixes("a", "../b"), "?a1.jpg > ../b1.jpg");
        row("nor to the folder itself", "a.jpg ab", "a.jpg ab", prefixes("a", ""), "?a.jpg > .jpg, ab > b");
        row("nor above it", "a", "a", prefixes("a", ".."), "?a > ..");
        row("an extension is no folder", "a.jpeg", "a.jpeg", extension("x/jpg"), "?a.jpeg > a.x/jpg");
        row("blanks are as good as letters", "a.jpg", "a.jpg", names("  "),
            "a.jpg > \u00a0\u00a0"
            "0001.jpg");
        row("a name may be too long", "a.jpg", "a.jpg", names(longPrefix),
            QByteArray("&a.jpg > " + longPrefix + "0001.jpg").constData());
        row("two photos of one file", "a1.jpg b2.jpg", "a1.jpg a1.jpg b2.jpg", names("Trip"),
            "a1.jpg > Trip0001.jpg, =a1.jpg > Trip0001.jpg, b2.jpg > Trip0002.jpg");
        row("numbers of all that begins alike", "7.jpg 0042x.jpg ab9.jpg", "7.jpg", renumber(1), "7.jpg > 0010.jpg");
        row("sidecars go along", "a.jpg a.XMP a.jpg.xmp b.jpg.xmp", "a.jpg", prefixes("a", "z"),
            "a.jpg > z.jpg +a.jpg.xmp>z.jpg.xmp +a.XMP>z.XMP");
        row("the sidecar of a stem that stays", "a.jpeg a.xmp a.jpeg.xmp", "a.jpeg", extension("jpg"),
            "a.jpeg > a.jpg +a.jpeg.xmp>a.jpg.xmp");
        row("two share a sidecar, which goes once", "a.cr2 a.jpg a.xmp", "a.jpg a.cr2", prefixes("a", "z"),
            "a.jpg > z.jpg, a.cr2 > z.cr2 +a.xmp>z.xmp");
        row("it is the raw one's", "a.cr2 a.jpg a.xmp", "a.cr2 a.jpg", names("T"),
            "a.cr2 > T0001.cr2 +a.xmp>T0001.xmp, a.jpg > T0002.jpg");
        row("and stays with it", "a.cr2 a.jpg a.xmp", "a.jpg", names("T"), "a.jpg > T0001.jpg");
        row("of others it is the JPEG's, whoever goes first", "a.png a.jpg a.xmp", "a.png a.jpg", names("T"),
            "a.png > T0001.png, a.jpg > T0002.jpg +a.xmp>T0002.xmp");
        row("and no newcomer's", "I1.png I1.tif I1.xmp a1.jpg", "I1.png a1.jpg I1.tif", prefixes("a", "I"),
            "a1.jpg > I1.jpg ?sidecar");
        row("names are handed on, sidecars are not", "II1.jpg II1.png II1.xmp I1.jpg", "II1.jpg I1.jpg II1.png",
            prefixes("I", "II"), "II1.jpg > III1.jpg +II1.xmp>III1.xmp, I1.jpg > II1.jpg, II1.png > III1.png");
        row("even where one is left behind", "II1.jpg II1.png II1.xmp I1.tif", "II1.png I1.tif", prefixes("I", "II"),
            "II1.png > III1.png, I1.tif > II1.tif ?sidecar");
        row("a sidecar of another stands there", "IMG_1.jpg DSC_1.cr2 DSC_1.xmp", "IMG_1.jpg", prefixes("IMG", "DSC"),
            "IMG_1.jpg > DSC_1.jpg ?sidecar");
        row("a file that is gone makes no room", "I.jpg", "I.jpg II.jpg", prefixes("I", "II"),
            "I.jpg > II.jpg, missing II.jpg > III.jpg");
        row("a lost photo waits for the name", "p1.jpg lost1.jpg", "p1.jpg lost1.jpg", prefixes("p", "gone"),
            "lost p1.jpg > gone1.jpg");
        row("nor is it among numbers", "a.jpg", "a.jpg", names("gone"), "a.jpg > gone0002.jpg");
        row("a sidecar has no room", "a.jpg a.xmp z.xmp", "a.jpg", prefixes("a", "z"), "!!a.jpg > z.jpg +a.xmp>z.xmp");
    }
    void filesGetTheirNames()
    {
        QFETCH(QStringList, folder);
        QFETCH(QStringList, files);
        QFETCH(std::function<void(RenameSettings &)>, change);
        RenameSettings settings;
        change(settings);
        QStringList paths;
        for (const QString &file : files)
            paths << QString(QStringLiteral("/p/") + file);
        int listed = 0;
        const auto list = [&](const QString &path, QString *) {
            ++listed;
            return path == u"/p" ? folder : QStringList();
        };
        const RenamePlan plan(settings, paths, FolderNames(list, {QStringLiteral("/p/gone1.jpg")}));
        QTEST(told(plan), "plan");
        QCOMPARE(listed, 1);
    }

    void numbersCountInEveryFolder()
    {
        FolderNames listing([](const QString &folder, QString *) {
            return folder == u"/a" ? QStringList{QStringLiteral("x 9.jpg")} : QStringList{QStringLiteral("x 0020")};
        });
        const QStringList paths{QStringLiteral("/a/x 9.jpg"), QStringLiteral("/b/y.jpg")};
        QCOMPARE(smallestUniqueNumberForPrefix(QStringLiteral("x "), paths, listing), 21);
        QCOMPARE(smallestUniqueNumberForPrefix({}, paths, listing), 10);
        QCOMPARE(fileNumberFromName(QStringLiteral("a1234"), 3).number, 34);
        QCOMPARE(fileNumberFromName(QStringLiteral("12"), 5).digitCount, 0);
        QCOMPARE(beginningOfName(QStringLiteral("/a b/IMG_0012.jpg")), QStringLiteral("IMG"));
        QCOMPARE(beginningOfName(QStringLiteral("/a/Été 2012.jpg")), QStringLiteral("Été"));
        QCOMPARE(beginningOfName(QStringLiteral("/a/0012.jpg")), QString());
    }
    void whereCaseMakesNoDifferenceNamesClash()
    {
        const QStringList names{QStringLiteral("A.JPG"), QStringLiteral("a.jpeg"), QStringLiteral("b.Jpeg")};
        const FolderNames folder(
            [&](const QString &, QString *) { return names; }, {},
            [&](const QString &path) { return names.contains(nameOf(path), Qt::CaseInsensitive); });
        const auto planned = [&](const char *newPrefix, const QStringList &paths) {
            return told(RenamePlan({.oldPrefix = QStringLiteral("a"), .newPrefix = QString::fromUtf8(newPrefix)}, paths,
                                   folder));
        };
        QCOMPARE(planned("B", {QStringLiteral("/p/a.jpeg")}), QStringLiteral("!a.jpeg > B.jpeg"));
        QCOMPARE(planned("c", {QStringLiteral("/p/a.JPEG")}), QStringLiteral("a.JPEG > c.JPEG"));
        const RenamePlan extensions({.style = Style::Extension, .extension = QStringLiteral("jpg")},
                                    {QStringLiteral("/p/a.jpeg"), QStringLiteral("/p/b.Jpeg")}, folder);
        QCOMPARE(told(extensions), QStringLiteral("!a.jpeg > a.jpg, b.Jpeg > b.jpg"));
    }
    void nothingIsKnownOfAFolderThatCannotBeRead()
    {
        const RenamePlan plan({.oldPrefix = QStringLiteral("a"), .newPrefix = QStringLiteral("b")},
                              {QStringLiteral("/p/a.jpg"), QStringLiteral("/p/x.jpg")},
                              FolderNames([](const QString &, QString *reason) {
                                  *reason = QStringLiteral("locked");
                                  return std::optional<QStringList>();
                              }));
        QCOMPARE(plan.obstacleCount(), 1);
        QCOMPARE(plan.steps().first().obstacle, RenamePlan::Obstacle::Unreadable);
        QCOMPARE(plan.steps().first().detail, QStringLiteral("locked"));
    }
    void aRunEndsAtTheFirstObstacle()
    {
        const RenamePlan plan(
            {.style = Style::Extension, .extension = QStringLiteral("jpg")},
            {QStringLiteral("/a.tif"), QStringLiteral("/b.tif"), QStringLiteral("/b.png")},
            FolderNames([](const QString &, QString *) {
                return QStringList{QStringLiteral("a.tif"), QStringLiteral("b.tif"), QStringLiteral("b.png")};
            }));
        QCOMPARE(plan.renamedCount(), 3);
        QCOMPARE(plan.obstacleCount(), 1);
        QCOMPARE(plan.renamedBeforeObstacle(), 2);
        QCOMPARE(plan.steps().first().newPath, QStringLiteral("/a.jpg"));
    }
};

REGISTER_TEST(TestRenamePlan)
#include "TestRenamePlan.moc"
