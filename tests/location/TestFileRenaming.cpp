#include "FileRenaming.h"
#include "FileSystemCalls.h"
#include "TestRunner.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <optional>

namespace {

const FileSystemCalls realCalls = fileSystemCalls();

template<int error>
int fail(const char *, const char *)
{
    errno = error;
    return -1;
}

/// A folder with files, each of another content.
class Scene
{
public:
    /// False when the name is taken.
    bool put(const QByteArray &name, const QByteArray &content) const
    {
        const int file = ::open(native(name).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        return file >= 0 && ::write(file, content.constData(), size_t(content.size())) == content.size() &&
               ::close(file) == 0;
    }
    [[nodiscard]] QString at(const QString &name) const { return m_dir.filePath(name); }

    /// Names, with slashes, by content, of all files; nothing when two have one content.
    [[nodiscard]] std::optional<QMap<QByteArray, QByteArray>> files() const
    {
        QMap<QByteArray, QByteArray> found;
        const std::filesystem::path root(m_dir.path().toStdString());
        for (const auto &entry : std::filesystem::recursive_directory_iterator(root)) {
            if (!entry.is_regular_file())
                continue;
            const auto name = QByteArray::fromStdString(entry.path().lexically_relative(root).string());
            const int file = ::open(native(name).constData(), O_RDONLY | O_CLOEXEC);
            QByteArray content(64, 0);
            content.resize(::read(file, content.data(), size_t(content.size())));
            ::close(file);
            if (found.contains(content))
                return {};
            found.insert(content, name);
        }
        return found;
    }

private:
    [[nodiscard]] QByteArray native(const QByteArray &name) const
    {
        return QFile::encodeName(m_dir.path()) + '/' + name;
    }

    struct Remover
    {
        const QTemporaryDir &dir;
        ~Remover() { std::filesystem::remove_all(dir.path().toStdString()); } // also of names that are no text
    };
    QTemporaryDir m_dir;
    Remover m_remover{m_dir};
};

/// What people and cameras call files, and what nobody would.
QByteArray randomName(QRandomGenerator &random)
{
    static const QList<QByteArray> stems{"a",
                                         "A",
                                         "IMG_",
                                         "IMG",
                                         "Trip",
                                         "Trip000",
                                         "x y",
                                         " ",
                                         "é",
                                         "e\xcc\x81",
                                         "n\new",
                                         "\xff\xfe",
                                         "a.jpg",
                                         ".h",
                                         "0",
                                         "-",
                                         "%1",
                                         "\xe2\x80\xae"
                                         "b",
                                         "€9",
                                         "99999999999999999999",
                                         "Trip0001"};
    static const QList<QByteArray> extensions{"", ".jpg", ".JPG", ".cr2", ".xmp", ".XMP", ".jpg.xmp", ".a b", "."};
    QByteArray name = stems.at(random.bounded(stems.size()));
    if (random.bounded(3) > 0)
        name += QByteArray::number(random.bounded(12));
    return name + extensions.at(random.bounded(extensions.size()));
}

RenameSettings randomSettings(QRandomGenerator &random, RenameSettings::Style style)
{
    static const QStringList texts{QStringLiteral("a"),    QStringLiteral("IMG_"), QStringLiteral("Trip"),
                                   QStringLiteral(" "),    QStringLiteral("x/"),   QStringLiteral("../x"),
                                   QStringLiteral(""),     QStringLiteral("jpg"),  QStringLiteral("jpg.xmp"),
                                   QStringLiteral("xmp"),  QStringLiteral("."),    QStringLiteral("sub"),
                                   QString(QChar(0xd800)), QString(251, u'y'),     QStringLiteral("n\ne")};
    const auto text = [&] { return texts.at(random.bounded(texts.size())); };
    RenameSettings settings{.style = style, .oldPrefix = texts.at(random.bounded(3)), .newPrefix = text()};
    settings.extension = text();
    settings.prefix = text();
    settings.renumberFrom = random.bounded(20000);
    if (random.bounded(2) == 0)
        settings.completeFrom = random.bounded(20000);
    return settings;
}

/// The pictures that a library could have, in any order, some twice.
QStringList somePaths(QRandomGenerator &random, const Scene &scene)
{
    QStringList paths;
    const auto files = scene.files().value();
    for (const QByteArray &name : files) {
        const QString text = QString::fromUtf8(name);
        const bool isPicture = text.toUtf8() == name && !text.endsWith(QStringLiteral(".xmp"), Qt::CaseInsensitive);
        for (int times = isPicture ? random.bounded(5) / 2 : 0; times > 0; --times)
            paths.insert(random.bounded(paths.size() + 1), scene.at(text));
    }
    return paths;
}

}

/// Files that get other names on disk.
class TestFileRenaming : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { fileSystemCalls() = realCalls; }

    void noFileIsEverLostOrReplaced_data()
    {
        QTest::addColumn<int>("style");
        QTest::addColumn<int>("refuses"); ///< of the calls: none, the one that refuses to replace, and links as well
        for (int style = 0; style < 4; ++style)
            for (int refuses = 0; refuses < 3; ++refuses)
                QTest::addRow("style %d, %d calls missing", style, refuses) << style << refuses;
    }
    void noFileIsEverLostOrReplaced()
    {
        QFETCH(int, style);
        QFETCH(int, refuses);
        if (refuses > 0)
            fileSystemCalls().renameNoReplace = fail<EINVAL>;
        if (refuses > 1)
            fileSystemCalls().link = fail<EPERM>;
        int renamedInAll = 0;
        for (quint32 seed = 1; seed <= 15; ++seed) {
            QRandomGenerator random(seed);
            const Scene scene;
            QVERIFY(QDir(scene.at({})).mkpath(QStringLiteral("sub")) &&
                    QDir(scene.at({})).mkpath(QStringLiteral("Trip0003.jpg")));
            for (int file = 0; file < 40; ++file) {
                const QByteArray name = (random.bounded(4) == 0 ? "sub/" : "") + randomName(random);
                (void)scene.put(name, "content " + QByteArray::number(file));
            }
            const auto before = scene.files().value();
            const QStringList paths = somePaths(random, scene);
            const auto settings = randomSettings(random, static_cast<RenameSettings::Style>(style));
            const RenamePlan plan(settings, paths);
            auto expected = before;
            for (const RenamePlan::Step &step : plan.steps()) {
                if (step.newPath.isEmpty() || step.isMovedBefore)
                    continue;
                const bool isDone = FileRenaming::carryOut(step).isDone;
                QCOMPARE(isDone, refuses < 2 && step.obstacle == RenamePlan::Obstacle::None);
                if (!isDone)
                    break;
                ++renamedInAll;
                for (const auto &move : QList<RenamePlan::Move>{{step.oldPath, step.newPath}} + step.sidecars) {
                    const QDir root(scene.at({}));
                    const QByteArray content = expected.key(root.relativeFilePath(move.from).toUtf8());
                    expected.insert(content, root.relativeFilePath(move.to).toUtf8());
                }
            }
            QCOMPARE(scene.files(), std::optional(expected)); // the others have not stirred
        }
        QVERIFY(refuses == 2 ? renamedInAll == 0 : renamedInAll > 10);
    }

    void aSidecarThatCannotGoAlongHoldsItsPicture()
    {
        const Scene scene;
        QVERIFY(scene.put("a.jpg", "picture"));
        QVERIFY(scene.put("a.jpg.xmp", "notes"));
        QVERIFY(scene.put("a.xmp", "more notes"));
        const RenamePlan plan({.oldPrefix = QStringLiteral("a"), .newPrefix = QStringLiteral("b")},
                              {scene.at(QStringLiteral("a.jpg"))});
        QVERIFY(scene.put("b.xmp", "came meanwhile"));
        const auto before = scene.files();
        const auto renaming = FileRenaming::carryOut(plan.steps().first());
        QVERIFY(!renaming.isDone);
        QVERIFY2(renaming.reason.contains(QStringLiteral("\"a.xmp\"")), qPrintable(renaming.reason));
        QCOMPARE(scene.files(), before);
        QVERIFY(QFile::remove(scene.at(QStringLiteral("a.xmp")))); // one that is gone holds nothing
        QVERIFY(FileRenaming::carryOut(plan.steps().first()).isDone);
        QCOMPARE(scene.files()->value("notes"), QByteArray("b.jpg.xmp"));
    }

    void oneFileByTwoPathsIsRenamedOnce()
    {
        const Scene scene;
        QVERIFY(QDir(scene.at({})).mkpath(QStringLiteral("real")));
        QVERIFY(QFile::link(scene.at(QStringLiteral("real")), scene.at(QStringLiteral("link"))));
        QVERIFY(scene.put("real/a.jpg", "picture"));
        const RenamePlan plan({.style = RenameSettings::Style::NewNames, .prefix = QStringLiteral("n")},
                              {scene.at(QStringLiteral("link/a.jpg")), scene.at(QStringLiteral("real/a.jpg"))});
        QCOMPARE(plan.renamedCount(), 1);
        QVERIFY(plan.steps().last().isMovedBefore);
        QCOMPARE(plan.steps().last().newPath, scene.at(QStringLiteral("real/n0001.jpg")));
        QVERIFY(FileRenaming::carryOut(plan.steps().first()).isDone);
        QVERIFY(QFile::exists(plan.steps().last().newPath));
    }
};

REGISTER_TEST(TestFileRenaming)
#include "TestFileRenaming.moc"
