#pragma once

#include "BookmarkData.h"
#include "FileBookmark.h"
#include "Volumes.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <utime.h>

Q_DECLARE_METATYPE(BookmarkResolution::Status)

/// A folder with photos in it, of which one is bookmarked, and a world that ends at that folder: whatever is looked for
/// is looked for there alone, as if its volume held nothing else.
class BookmarkScene
{
public:
    static constexpr qsizetype kPhotoSize = 200'000;

    enum class Photos { Made, Present };

    explicit BookmarkScene(const QString &folder, Photos photos = Photos::Made)
        : m_root(QFileInfo(folder).canonicalFilePath())
    {
        if (photos == Photos::Present)
            return;
        write("Pictures/2023/photo.jpg", content(1));
        write("Pictures/2023/other.jpg", content(2));
        write("Pictures/2022/third.jpg", content(3));
        write("Archive/old/fourth.jpg", content(4));
        photo = bookmarkOf("Pictures/2023/photo.jpg");
    }

    /// Photos differ in every part.
    static QByteArray content(quint32 seed, qsizetype size = kPhotoSize)
    {
        QByteArray bytes(size, Qt::Uninitialized);
        QRandomGenerator random(seed);
        for (char &byte : bytes)
            byte = static_cast<char>(random.bounded(256));
        return bytes;
    }

    QString at(const char *path) const { return m_root + u'/' + QString::fromUtf8(path); }
    QByteArray nativeAt(const char *path) const { return QFile::encodeName(at(path)); }

    /// In place when the file exists: it keeps its inode.
    void write(const char *path, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(at(path)).path());
        QFile file(at(path));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    void move(const char *from, const char *to) const
    {
        QDir().mkpath(QFileInfo(at(to)).path());
        QVERIFY2(::rename(nativeAt(from).constData(), nativeAt(to).constData()) == 0, from);
    }
    void copy(const char *from, const char *to) const
    {
        QDir().mkpath(QFileInfo(at(to)).path());
        QVERIFY(QFile::copy(at(from), at(to)));
    }
    void remove(const char *path) const { QVERIFY(QFile::remove(at(path))); }
    void setDate(const char *path, time_t seconds) const
    {
        const utimbuf times{seconds, seconds};
        QVERIFY(::utime(nativeAt(path).constData(), &times) == 0);
    }
    QByteArray bookmarkOf(const char *path) const
    {
        return FileBookmark::create(at(path), *volumes()).value_or(QByteArray());
    }

    /// The scene's folder as if it were all of its volume, with a file system of that type.
    std::shared_ptr<const Volumes> volumes(const QByteArray &type = "ext4",
                                           const QByteArray &identity = "uuid:scene") const
    {
        const QByteArray point = QFile::encodeName(m_root);
        const auto present = examineFile(kNoFolder, point.constData());
        const QByteArray id = QByteArray::number(present ? present->mountId : 0);
        const QByteArray line = id + " 1 0:1 / " + QByteArray(point).replace(' ', "\\040") + " rw - " + type + " x rw";
        return std::make_shared<const Volumes>(line, [&](const Mount &) { return identity; });
    }

    BookmarkResolution resolve(const QByteArray &bookmark, BookmarkOptions options = {}) const
    {
        if (!options.volumes)
            options.volumes = volumes();
        return FileBookmark::resolve(bookmark, options);
    }

    QByteArray photo; ///< the bookmark of Pictures/2023/photo.jpg

private:
    QString m_root;
};
