#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
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
    QString oldPrefix;
    QString newPrefix;
    qint64 renumberFrom = 1;
    QString extension;
    QString prefix;
    std::optional<qint64>
        completeFrom; ///< where new names begin to count, at the least; nothing: after those there are

    /// Whether it is told enough to rename anything.
    [[nodiscard]] bool isComplete() const
    {
        return (style != Style::ReplacePrefix || !oldPrefix.isEmpty()) &&
               (style != Style::Extension || !extension.isEmpty());
    }
};

/// The number at the end of a name.
struct TrailingNumber
{
    qint64 number = 0;
    int digitCount = 0;
};
/// Reads no further back than the prefix, whose length is given. Of more digits than a number can have the last count.
[[nodiscard]] TrailingNumber fileNumberFromName(const QString &name, qsizetype prefixLength);

/// What becomes of each file when many are renamed one after the other, worked out before anything is touched. Any
/// thread; reads folders.
class RenamePlan
{
public:
    struct Step
    {
        QString oldPath;
        QString newPath;      ///< empty when the file keeps its name
        bool clashes = false; ///< the new path will be taken when its turn comes, or is no path
    };
    /// The names in a folder.
    using Listing = std::function<QStringList(const QString &folder)>;

    /// Lists each folder of the files at most once, with `listing`, else from the disk.
    RenamePlan(const RenameSettings &settings, const QStringList &paths, const Listing &listing = {});

    [[nodiscard]] const QList<Step> &steps() const { return m_steps; }
    /// Files that get another name.
    [[nodiscard]] qsizetype renamedCount() const;
    [[nodiscard]] bool hasClashes() const;

private:
    QList<Step> m_steps;
};

/// The smallest number above all that follow one of the stems in the folders of the files: the prefix in each folder,
/// or the files' own names without the numbers at their ends. 1 when there is none.
[[nodiscard]] qint64 smallestUniqueNumberForPrefix(const std::optional<QString> &prefix, const QStringList &paths,
                                                   const RenamePlan::Listing &listing);
