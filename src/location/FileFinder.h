#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// Where a reference's file was found.
struct FoundFile
{
    bool found = false;
    QString path; ///< the present path; the last known one when it was not found
    /// Not found because the volume on which it stood is not mounted; nothing about it is to be changed.
    bool volumeAway = false;
    /// A search told that the file was written or replaced where it stands, which has been taken up.
    bool contentChanged = false;
};

/// How file references keep their files findable, keyed by the reference's guid. The library owns one and hands it
/// to its references. Main thread.
class FileFinder
{
public:
    virtual ~FileFinder() = default;

    /// Takes up what is stored for `guid` and finds the file, by `path` when nothing is stored. Stores what is new.
    virtual FoundFile locate(const QString &guid, const QString &path) = 0;
    /// Forgets what is stored for `guid` and starts again from `path`.
    virtual FoundFile relocate(const QString &guid, const QString &path) = 0;
    /// Forgets every guid that is not among those given.
    virtual void trimUnusedFiles(const QStringList &guidsInUse) = 0;
    /// What is stored to tell the file of `guid` from others; empty when there is nothing.
    [[nodiscard]] virtual QByteArray bookmark(const QString & /*guid*/) { return {}; }
    /// Writes what is stored and not on disk yet.
    virtual void save() {}

    /// Does the slow part of locate() for a file that is new. May be called on any thread, as long as the finder lives.
    using Preparation = std::function<QByteArray(const QString &path)>;
    /// Empty when there is no slow part.
    [[nodiscard]] virtual Preparation preparation() { return {}; }
    /// Hands over what the preparation gave for the file that is located next.
    virtual void usePrepared(const QString &path, const QByteArray &prepared);
};

/// Believes the path alone: a file is where it was, or it is lost.
class PathFileFinder final : public FileFinder
{
public:
    FoundFile locate(const QString &guid, const QString &path) override;
    FoundFile relocate(const QString &guid, const QString &path) override;
    void trimUnusedFiles(const QStringList &guidsInUse) override;
};
