#pragma once

#include "DispatchQueue.h"
#include "MainThreadLink.h"
#include "PIFileRef.h"

#include <QHash>
#include <QList>

#include <functional>
#include <memory>
#include <stop_token>

class NotificationCenter;

/// Reads dates and sizes of the library's files on other threads, because a disk may not answer, and hands them to the
/// references. Each is announced with "hmphoto.fileFacts". Main thread.
class FileFacts
{
public:
    /// Reads those of one file, on any thread.
    using Read = std::function<FileAttributes(const QString &path)>;

    /// `notifications` outlives this.
    explicit FileFacts(NotificationCenter &notifications, Read read = &FileAttributes::of);
    ~FileFacts();
    FileFacts(const FileFacts &) = delete;
    FileFacts &operator=(const FileFacts &) = delete;

    void setReader(const Read &read) { m_read = read; }
    /// Reads those of them that are not known, and are not being read already. Where a disk never answers, nothing is
    /// ever announced.
    void want(const QList<std::shared_ptr<PIFileRef>> &files);

private:
    struct Question
    {
        QString guid;
        QString path;
    };
    struct Answer
    {
        QString guid;
        FileAttributes attributes;
    };
    struct Asked
    {
        std::shared_ptr<PIFileRef> file;
        quint32 age = 0;
    };

    void ask(const QList<Question> &questions);
    void askFarAway(const QList<Question> &questions);
    void take(const QList<Answer> &answers);

    NotificationCenter &m_notifications;
    Read m_read;
    QHash<QString, Asked> m_asked; ///< by guid
    std::stop_source m_stop;
    MainThreadLink<FileFacts> m_link{*this};
    DispatchQueue m_near;
    DispatchQueue m_far; ///< for the disks that are likeliest not to answer
};
