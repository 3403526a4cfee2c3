#include "FileFacts.h"

#include "FileNotifications.h"
#include "NotificationCenter.h"
#include "Volumes.h"

#include <QFile>

#include <utility>

namespace {

constexpr int kReadsAtOnce = 4;
constexpr qsizetype kBatch = 200;

}

FileFacts::FileFacts(NotificationCenter &notifications, Read read)
    : m_notifications(notifications)
    , m_read(std::move(read))
    , m_near(QStringLiteral("hmphoto.fileFacts"), kReadsAtOnce, DispatchQueue::AtEnd::LeaveBehind)
    , m_far(QStringLiteral("hmphoto.remoteFileFacts"), kReadsAtOnce, DispatchQueue::AtEnd::LeaveBehind)
{}

FileFacts::~FileFacts()
{
    m_stop.request_stop();
}

void FileFacts::want(const QList<std::shared_ptr<PIFileRef>> &files)
{
    QList<Question> questions;
    for (const auto &file : files) {
        if (file->areAttributesKnown() || m_asked.contains(file->guid()))
            continue;
        m_asked.insert(file->guid(), {file, file->factsAge()});
        questions.append({file->guid(), file->path()});
        if (questions.size() == kBatch)
            ask(std::exchange(questions, {}));
    }
    if (!questions.isEmpty())
        ask(questions);
}

void FileFacts::ask(const QList<Question> &questions)
{
    m_near.async([questions, read = m_read, stop = m_stop.get_token(), toHere = m_link.toHere()] {
        const auto volumes = Volumes::current();
        QList<Answer> answers;
        QList<Question> farAway;
        for (const Question &question : questions) {
            if (stop.stop_requested())
                return;
            if (volumes->isRemote(QFile::encodeName(question.path)))
                farAway.append(question);
            else
                answers.append({question.guid, read(question.path)});
        }
        toHere([answers, farAway](FileFacts &here) {
            here.askFarAway(farAway);
            here.take(answers);
        });
    });
}

void FileFacts::askFarAway(const QList<Question> &questions)
{
    if (questions.isEmpty())
        return;
    m_far.async([questions, read = m_read, stop = m_stop.get_token(), toHere = m_link.toHere()] {
        QList<Answer> answers;
        for (const Question &question : questions) {
            if (stop.stop_requested())
                return;
            answers.append({question.guid, read(question.path)});
        }
        toHere([answers](FileFacts &here) { here.take(answers); });
    });
}

void FileFacts::take(const QList<Answer> &answers)
{
    QList<std::shared_ptr<PIFileRef>> told;
    QList<std::shared_ptr<PIFileRef>> again;
    for (const Answer &answer : answers) {
        const Asked asked = m_asked.take(answer.guid);
        if (asked.age == asked.file->factsAge())
            asked.file->setFileAttributes(answer.attributes);
        const bool isOutdated = asked.age != asked.file->factsAge() && !asked.file->areAttributesKnown();
        (isOutdated ? again : told).append(asked.file);
    }
    want(again);
    for (const auto &file : std::as_const(told))
        m_notifications.post(kFileFactsNotification, file);
}
