#pragma once

#include "FileFinder.h"
#include "NotificationCenter.h"
#include "PhotoLibrary.h"

#include <QSet>
#include <QStringList>
#include <QTemporaryDir>

/// Finds every file where it was said to be, but for those that it was told are lost.
class FakeFinder final : public FileFinder
{
public:
    FoundFile locate(const QString &, const QString &path) override { return {!lost.contains(path), path}; }
    FoundFile relocate(const QString &guid, const QString &path) override { return locate(guid, path); }
    void trimUnusedFiles(const QStringList &guidsInUse) override { kept = guidsInUse; }

    QSet<QString> lost;
    QStringList kept;
};

/// A library with everything it needs around it, in a folder of its own.
struct TestLibrary
{
    TestLibrary();

    [[nodiscard]] QString path(const QString &name) const { return folder.filePath(name); }
    std::shared_ptr<PIFolder> addFolder();
    /// A photo of the file in the last folder of the last group.
    std::shared_ptr<PIPhoto> addPhoto(const QString &filePath);

    QTemporaryDir folder;
    NotificationCenter notifications;
    FakeFinder finder;
    PhotoLibrary library;
};

/// The lines that go to the system log while it lives.
class LogLines
{
public:
    LogLines();
    ~LogLines();
    LogLines(const LogLines &) = delete;
    LogLines &operator=(const LogLines &) = delete;

    QStringList lines;
};

/// Everything in the library that a file must keep, one line for each thing.
[[nodiscard]] QStringList describe(const PhotoLibrary &library);
[[nodiscard]] QString dataFile(const QString &name);
[[nodiscard]] QByteArray contentOf(const QString &path);
