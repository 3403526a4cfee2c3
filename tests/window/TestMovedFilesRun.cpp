#include "../editing/House.h"
#include "TestRunner.h"

#include "MovedFilesRun.h"

#include <QDir>
#include <QProgressDialog>
#include <QSemaphore>
#include <QTest>
#include <QWidget>

namespace {

/// Makes files findable only when it is let.
struct SlowFinder final : FileFinder
{
    std::shared_ptr<QSemaphore> turns = std::make_shared<QSemaphore>();
    FoundFile locate(const QString &guid, const QString &path) override { return m_paths.locate(guid, path); }
    FoundFile relocate(const QString &guid, const QString &path) override { return m_paths.relocate(guid, path); }
    void trimUnusedFiles(const QStringList &) override {}
    Preparation preparation() override
    {
        return [turns = turns](const QString &) {
            turns->acquire();
            return QByteArray();
        };
    }

private:
    PathFileFinder m_paths;
};

}

class TestMovedFilesRun : public QObject
{
    Q_OBJECT

    static constexpr int kFiles = 120;
    QTemporaryDir m_dir;
    NotificationCenter m_notifications;
    SlowFinder m_finder;
    QWidget m_window;
    std::unique_ptr<PhotoLibrary> m_library;
    QList<FileCommands::MovedFile> m_files;
    std::optional<MovedFilesRun::Outcome> m_outcome;

    void start(DispatchQueue &queue)
    {
        m_outcome.reset();
        MovedFilesRun::start(*m_library, queue, m_files, QStringLiteral("Find"), m_window, &m_window,
                             [this](const auto &outcome) { m_outcome = outcome; });
    }

private Q_SLOTS:
    /// All are lost; all but three stand at their new places.
    void init()
    {
        m_library = std::make_unique<PhotoLibrary>(m_dir.path(), m_finder, m_notifications);
        m_library->makeDefaultLibrary();
        m_files.clear();
        for (int i = 0; i < kFiles; ++i) {
            const QString name = QString::number(i);
            const auto file = m_library->fileRefs().fileRefForPath(m_dir.filePath(QStringLiteral("gone/") + name));
            m_library->groups().first()->folders().first()->photos() << std::make_shared<PIPhoto>(file);
            m_files << FileCommands::MovedFile{.file = file, .path = m_dir.filePath(name)};
            QVERIFY(i < 3 || QFile(m_dir.filePath(name)).open(QFile::WriteOnly));
        }
        m_finder.turns = std::make_shared<QSemaphore>();
    }

    void allThatAreThereAreTaken()
    {
        DispatchQueue queue(QStringLiteral("test"));
        m_finder.turns->release(kFiles);
        start(queue);
        QTRY_VERIFY(m_outcome);
        QCOMPARE(m_outcome->taken, kFiles - 3);
        QCOMPARE(m_outcome->notFound, 3);
        QVERIFY(!m_outcome->isCancelled);
        QVERIFY(m_files[2].file->isFileLost() && !m_files.last().file->isFileLost());
        QCOMPARE(m_files.last().file->path(), m_files.last().path);
        QTRY_VERIFY(!m_window.findChild<QProgressDialog *>());
    }

    void whatWasTakenBeforeTheCancelStays()
    {
        DispatchQueue queue(QStringLiteral("test"));
        m_finder.turns->release(60); // and then the disk does not answer
        start(queue);
        QTRY_VERIFY(!m_files[10].file->isFileLost());
        Q_EMIT m_window.findChild<QProgressDialog *>()->canceled();
        QVERIFY(m_outcome && m_outcome->isCancelled);
        QCOMPARE(m_outcome->taken + m_outcome->notFound, kFiles);
        m_finder.turns->release(kFiles);
        queue.waitUntilIdle();
        QCoreApplication::processEvents();
        QVERIFY(m_files.last().file->isFileLost());
    }
};

REGISTER_TEST(TestMovedFilesRun)
#include "TestMovedFilesRun.moc"
