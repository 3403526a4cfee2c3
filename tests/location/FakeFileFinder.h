#pragma once

#include "FileFinder.h"

#include <QHash>
#include <QStringList>

/// Finds what a test tells it to find, and notes what it was asked.
class FakeFileFinder final : public FileFinder
{
public:
    FoundFile locate(const QString &guid, const QString &path) override
    {
        calls.append(QStringLiteral("locate ") + path);
        return answer(guid, path);
    }
    FoundFile relocate(const QString &guid, const QString &path) override
    {
        calls.append(QStringLiteral("relocate ") + path);
        return answer(guid, path);
    }
    void trimUnusedFiles(const QStringList &guidsInUse) override { calls.append(guidsInUse); }

    QStringList calls;
    bool finds = true;
    QString movedTo;                ///< where every file is found; empty for where it was
    QHash<QString, QString> places; ///< the same for one guid

private:
    FoundFile answer(const QString &guid, const QString &path) const
    {
        const QString place = places.value(guid, movedTo.isEmpty() ? path : movedTo);
        return {finds, finds ? place : path};
    }
};
