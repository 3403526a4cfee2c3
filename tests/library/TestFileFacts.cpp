#include "TestRunner.h"

#include "FileFinder.h"
#include "FileNotifications.h"
#include "PhotoLibrary.h"

#include <QFile>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>

class TestFileFacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aDiskThatDoesNotAnswerHoldsUpItsOwnFilesOnly()
    {
        QTemporaryDir dir;
        NotificationCenter notifications;
        PathFileFinder finder;
        PhotoLibrary library(dir.path(), finder, notifications);
        const auto file = [&](const char *name) {
            const QString path = dir.filePath(QLatin1String(name));
            return QFile(path).open(QFile::WriteOnly) ? library.fileRefs().fileRefForPath(path) : nullptr;
        };
        const auto stuck = file("stuck.jpg");
        const auto other = file("other.jpg");
        QStringList told;
        const auto observer = notifications.observe(
            kFileFactsNotification, [&](const NotificationObject &object) { told << object.as<PIFileRef>()->path(); });
        const auto asked = std::make_shared<QSemaphore>();
        const auto answers = std::make_shared<QSemaphore>();
        library.fileFacts().setReader([=, path = stuck->path()](const QString &wanted) {
            if (wanted != path)
                return FileAttributes{7, 1000};
            asked->release();
            answers->acquire();
            return FileAttributes{static_cast<quint64>(asked->available()), 2000};
        });
        library.fileFacts().want({stuck});
        library.fileFacts().want({stuck, other});
        QTRY_COMPARE(told, QStringList(other->path()));
        QCOMPARE(other->knownFileSize(), quint64(7));
        QCOMPARE(other->knownCreationTime(), 1000.0);
        QCOMPARE(stuck->knownFileSize(), quint64(0));
        QTRY_COMPARE(asked->available(), 1);

        stuck->forgetFacts(); // written meanwhile: what was read before is not to be taken up
        answers->release(2);
        QTRY_COMPARE(told, QStringList({other->path(), stuck->path()}));
        QCOMPARE(stuck->knownFileSize(), quint64(2));
        library.fileFacts().want({stuck, other});
        QCOMPARE(asked->available(), 2);
    }
};

REGISTER_TEST(TestFileFacts)
#include "TestFileFacts.moc"
