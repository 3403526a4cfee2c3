#pragma once

#include "FolderNames.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// How the files of several photos are to be renamed.
struct RenameSettings
{
    /// The numbers are stored.
    enum class Style {
        ReplacePrefix, ///< names that begin with the old prefix get the new one instead
        Renumber,      ///< names keep their stem and get a running number in place of the one at their end
        Extension,     ///< another extension
        NewNames,      ///< a prefix and a running number
    };
    Style style = Style::ReplacePrefix;
    QString oldPrefix = {};
    QString newPrefix = {};
    qint64 renumberFrom = 1;
    QString extension = {}; ///< without the dot
    QString prefix = {};
    /// Where new names begin to count, at the least; nothing: after those there are.
    std::optional<qint64> completeFrom = {};

    /// Whether it is told enough to rename anything.
    [[nodiscard]] bool isComplete() const
    {
        return (style != Style::ReplacePrefix || !oldPrefix.isEmpty()) &&
               (style != Style::Extension || !extension.isEmpty());
    }
    bool operator==(const RenameSettings &) const = default;
};

/// What the name of a file begins with: all before the first blank, digit or punctuation mark.
[[nodiscard]] QString beginningOfName(const QString &path);

/// The number at the end of a name.
struct TrailingNumber
{
    qint64 number = 0;
    int digitCount = 0;
};
/// Reads no further back than the prefix, whose length is given. Of more digits than a number can have the last count.
[[nodiscard]] TrailingNumber fileNumberFromName(const QString &name, qsizetype prefixLength);

/// What becomes of each file when many are renamed one after the other, worked out before anything is touched. Any
/// thread.
class RenamePlan
{
public:
    struct Move
    {
        QString from;
        QString to;
    };
    /// Why a file cannot get its new name.
    enum class Obstacle {
        None,
        NoName,       ///< no file can have such a name
        TooLong,      ///< nor one of so many bytes
        Taken,        ///< something will bear the name when the file's turn comes
        SidecarTaken, ///< the same for a sidecar of the file
        Reserved,     ///< a photo whose file is lost waits for a file of that name
        Missing,      ///< the file is not in its folder
        Unreadable,   ///< nobody can tell what is in its folder
    };
    struct Step
    {
        QString oldPath;
        QString newPath = {}; ///< empty when the file keeps its name
        Obstacle obstacle = Obstacle::None;
        QString detail = {};        ///< what the disk says to the obstacle, if anything
        bool isMovedBefore = false; ///< an earlier step renames the same file
        bool meetsSidecar = false;  ///< a sidecar that is not the file's will look like it
        QList<Move> sidecars = {};  ///< go with it
    };

    /// Asks for each folder of the files at most once.
    RenamePlan(const RenameSettings &settings, const QStringList &paths, FolderNames folders = FolderNames());

    [[nodiscard]] const QList<Step> &steps() const { return m_steps; }
    /// What was found to stand in a step's way since.
    void setObstacle(qsizetype step, Obstacle obstacle) { m_steps[step].obstacle = obstacle; }
    /// Files that would get another name if nothing stood in the way.
    [[nodiscard]] qsizetype renamedCount() const;
    [[nodiscard]] qsizetype obstacleCount() const;
    /// Files that get another name before the first obstacle.
    [[nodiscard]] qsizetype renamedBeforeObstacle() const;

private:
    QList<Step> m_steps;
};

/// The smallest number above all that follow one of the stems in the folders of the files: the prefix in each folder,
/// or the files' own names without the numbers at their ends. 1 when there is none.
[[nodiscard]] qint64 smallestUniqueNumberForPrefix(const std::optional<QString> &prefix, const QStringList &paths,
                                                   FolderNames &folders);
