#include "TestRunner.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <vector>

namespace {

std::vector<RegisteredTest::Maker> &makers()
{
    static std::vector<RegisteredTest::Maker> list;
    return list;
}

/// Points every folder a program may write to into `root`, so that no test sees or leaves anything of the user's.
void useOwnFolders(const QString &root)
{
    const std::pair<const char *, QString> folders[] = {
        {"HOME", root + QStringLiteral("/home")},
        {"XDG_DATA_HOME", root + QStringLiteral("/data")},
        {"XDG_CACHE_HOME", root + QStringLiteral("/cache")},
        {"XDG_CONFIG_HOME", root + QStringLiteral("/config")},
        {"XDG_RUNTIME_DIR", root + QStringLiteral("/run")},
    };
    for (const auto &[name, path] : folders) {
        QDir().mkpath(path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(name, path.toUtf8());
    }
}

}

RegisteredTest::RegisteredTest(Maker maker)
{
    makers().push_back(std::move(maker));
}

QString corpusFolder()
{
    const QString given = qEnvironmentVariable("TAMSEL_CORPUS");
    return !given.isEmpty() && QFileInfo(given).isDir() ? given : QString();
}

int main(int argc, char *argv[])
{
    QTemporaryDir root(QDir::tempPath() + QStringLiteral("/tamsel tests ü XXXXXX"));
    if (!root.isValid())
        return 1;
    useOwnFolders(root.path());
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("TamselTests"));

    const QByteArray only = qgetenv("TAMSEL_TEST");
    int failures = 0;
    for (const auto &make : makers()) {
        const std::unique_ptr<QObject> test = make();
        if (only.isEmpty() || only == test->metaObject()->className())
            failures += QTest::qExec(test.get(), application.arguments());
    }
    return failures == 0 ? 0 : 1;
}
