#include "FileRenaming.h"
#include "FileSystemCalls.h"
#include "TestRunner.h"

#include <QDir>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
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
    [[nodiscard]] QByteArray nameOf(const QString &path) const { return path.mid(m_dir.path().size() + 1).toUtf8(); }
    [[nodiscard]] bool remove(const QByteArray &name) const { return ::unlink(native(name).constData()) == 0; }

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

FileRenaming carryOut(const RenamePlan::Step &step)
{
    return FileRenaming::carryOut(step, FileKey::at(step.oldPath));
}

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

/// Of which many are another's with a letter more, or its sidecar.
QByteArray nameInAChain(QRandomGenerator &random)
{
    static const QList<QByteArray> extensions{".jpg", ".png", ".cr2", ".xmp", ".jpg.xmp"};
    return QByteArray(1 + random.bounded(4), 'I') + QByteArray::number(random.bounded(2)) +
           extensions.at(random.bounded(extensions.size()));
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

/// A folder of files of which some are renamed, while another program may be at work there.
class Run
{
public:
    Run(quint32 seed, RenameSettings::Style style)
        : m_random(seed)
        , m_isDisturbed(seed % 3 == 0)
        , m_isChain(seed % 2 == 0)
    {
        for (const char *folder : {"sub", "Trip0003.jpg"})
            (void)QDir(scene.at({})).mkpath(QString::fromUtf8(folder));
        for (int file = 0; file < 40; ++file)
            addFile();
        before = scene.files().value();
        paths = somePaths(m_random, scene);
        settings = m_isChain && style == RenameSettings::Style::ReplacePrefix
                       ? RenameSettings{.oldPrefix = QStringLiteral("I"), .newPrefix = QStringLiteral("II")}
                       : randomSettings(m_random, style);
    }

    /// Ends at the first file that keeps its name. False when one kept it that should not, or the other way round.
    bool carryOut(bool canRename)
    {
        const RenamePlan plan(settings, paths);
        QList<std::optional<FileKey>> keys;
        for (const RenamePlan::Step &step : plan.steps())
            keys << FileKey::at(step.oldPath);
        for (qsizetype i = 0; i < plan.steps().size(); ++i) {
            const RenamePlan::Step &step = plan.steps().at(i);
            if (m_isDisturbed && m_random.bounded(3) == 0)
                disturb();
            if (step.newPath.isEmpty() || step.isMovedBefore)
                continue;
            const bool isDone = FileRenaming::carryOut(step, keys.at(i)).isDone;
            const bool isFree = canRename && step.obstacle == RenamePlan::Obstacle::None;
            if (isDone != isFree && (isDone || !m_isDisturbed))
                return false;
            if (!isDone)
                return true;
            renamed.insert(scene.nameOf(step.oldPath), scene.nameOf(step.newPath));
        }
        return true;
    }

    /// What is wrong with where the file with that content is now; empty when nothing is.
    [[nodiscard]] QString faultOf(const QByteArray &content, const QByteArray &now) const
    {
        const QByteArray name = before.value(content);
        if (removed.contains(content))
            return {};
        if (now.isEmpty())
            return QString::fromUtf8(name + " is lost");
        const bool isSidecar = name.toLower().endsWith(".xmp");
        const bool isFine = isSidecar ? isWithItsPicture(name, now) : now == renamed.value(name, name);
        return isFine ? QString() : QString::fromUtf8(name + " is now " + now);
    }

    const Scene scene;
    QMap<QByteArray, QByteArray> before;
    QMap<QByteArray, QByteArray> renamed; ///< pictures, by what they were named
    QSet<QByteArray> removed;             ///< contents

private:
    void addFile()
    {
        const QByteArray name =
            m_isChain ? nameInAChain(m_random) : (m_random.bounded(4) == 0 ? "sub/" : "") + randomName(m_random);
        (void)scene.put(name, "content " + QByteArray::number(m_files++));
    }
    void disturb()
    {
        const auto files = scene.files().value();
        const QByteArray content = files.keys().at(m_random.bounded(files.size()));
        if (m_random.bounded(2) == 0)
            addFile();
        else if (scene.remove(files.value(content)))
            removed.insert(content);
    }
    /// It has not stirred unless a picture to which it could belong has, and with that it must have gone when it could
    /// belong to no other.
    [[nodiscard]] bool isWithItsPicture(const QByteArray &name, const QByteArray &now) const
    {
        const auto stem = [](const QByteArray &file) { return file.left(file.lastIndexOf('.')); };
        const QByteArray base = name.chopped(4);
        const auto isOf = [&](const QByteArray &picture) {
            static const QList<QByteArray> kinds{".jpg", ".JPG", ".cr2", ".png"};
            const bool isPicture = kinds.contains(picture.mid(picture.lastIndexOf('.')));
            return isPicture && (picture == base || stem(picture) == base);
        };
        if (now == name) {
            QList<QByteArray> pictures = before.values();
            pictures.removeIf([&](const QByteArray &file) { return !isOf(file); });
            const QByteArray picture = pictures.size() == 1 ? pictures.first() : QByteArray();
            const QByteArray newName = renamed.value(picture);
            return newName.isEmpty() || (picture != base && stem(newName) == base);
        }
        for (auto picture = renamed.cbegin(); picture != renamed.cend(); ++picture)
            if ((picture.key() == base && *picture == now.chopped(4)) ||
                (stem(picture.key()) == base && stem(*picture) == now.chopped(4)))
                return true;
        return false;
    }

    QRandomGenerator m_random;
    const bool m_isDisturbed;
    const bool m_isChain;
    int m_files = 0;
    QStringList paths;
    RenameSettings settings;
};

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
        qsizetype renamedInAll = 0;
        for (quint32 seed = 1; seed <= 18; ++seed) {
            Run run(seed, static_cast<RenameSettings::Style>(style));
            QVERIFY(run.carryOut(refuses < 2));
            const auto after = run.scene.files();
            QVERIFY(after);
            for (auto file = run.before.cbegin(); file != run.before.cend(); ++file)
                QCOMPARE(run.faultOf(file.key(), after->value(file.key())), QString());
            renamedInAll += run.renamed.size();
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
        const auto renaming = carryOut(plan.steps().first());
        QVERIFY(!renaming.isDone);
        QVERIFY2(renaming.reason.contains(QStringLiteral("\"a.xmp\"")), qPrintable(renaming.reason));
        QCOMPARE(scene.files(), before);
        QVERIFY(QFile::remove(scene.at(QStringLiteral("a.xmp")))); // one that is gone holds nothing
        QVERIFY(carryOut(plan.steps().first()).isDone);
        QCOMPARE(scene.files()->value("notes"), QByteArray("b.jpg.xmp"));
    }

    void onlyTheFileThatWasMeantIsRenamed()
    {
        const Scene scene;
        QVERIFY(scene.put("a.jpg", "picture") && scene.put("b.jpg", "another"));
        const RenamePlan plan({.oldPrefix = QStringLiteral("a"), .newPrefix = QStringLiteral("z")},
                              {scene.at(QStringLiteral("a.jpg"))});
        const auto meant = FileKey::at(scene.at(QStringLiteral("a.jpg")));
        QVERIFY(QFile::rename(scene.at(QStringLiteral("a.jpg")), scene.at(QStringLiteral("c.jpg"))));
        QVERIFY(!FileRenaming::carryOut(plan.steps().first(), meant).isDone);
        QVERIFY(QFile::rename(scene.at(QStringLiteral("b.jpg")), scene.at(QStringLiteral("a.jpg"))));
        const auto renaming = FileRenaming::carryOut(plan.steps().first(), meant);
        QVERIFY(!renaming.isDone && !renaming.reason.isEmpty());
        QCOMPARE(scene.files()->value("another"), QByteArray("a.jpg"));
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
        QVERIFY(carryOut(plan.steps().first()).isDone);
        QVERIFY(QFile::exists(plan.steps().last().newPath));
    }
};

REGISTER_TEST(TestFileRenaming)
#include "TestFileRenaming.moc"
