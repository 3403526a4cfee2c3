#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// The user's trash, from which files can be taken back.
class Trash
{
public:
    virtual ~Trash() = default;

    struct Failure
    {
        QString path; ///< where the file still stands
        QString reason;
    };
    /// Moves the files to the trash and tells of those that it could not move. Nothing is ever deleted instead.
    /// Waits for the disk: any thread but the main one.
    [[nodiscard]] virtual QList<Failure> recycle(const QStringList &paths) = 0;
};

/// The trash that the desktop's file manager shows: in the user's home, or on the volume of the file.
class DesktopTrash final : public Trash
{
public:
    [[nodiscard]] QList<Failure> recycle(const QStringList &paths) override;
};
