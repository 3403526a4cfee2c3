#include "RenamePlan.h"

#include "StringUtilities.h"

#include <QDir>
#include <QHash>
#include <QSet>

#include <algorithm>

namespace {

using Style = RenameSettings::Style;

constexpr int kMostDigits = 18; ///< that a number surely holds

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// Folders' names, each folder read once.
class Folders
{
public:
    explicit Folders(const RenamePlan::Listing &listing)
        : m_listing(listing)
    {}

    QStringList &namesIn(const QString &folder)
    {
        auto known = m_names.find(folder);
        if (known == m_names.end())
            known = m_names.insert(folder, m_listing ? m_listing(folder) : namesOnDisk(folder));
        return *known;
    }

private:
    static QStringList namesOnDisk(const QString &folder)
    {
        return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    const RenamePlan::Listing &m_listing;
    QHash<QString, QStringList> m_names;
};

QString numbered(const QString &stem, qint64 number)
{
    constexpr int kLeastDigits = 4;
    return stem + QStringLiteral("%1").arg(number, kLeastDigits, 10, QLatin1Char('0'));
}

QString withoutTrailingDigits(const QString &name)
{
    qsizetype end = name.size();
    while (end > 0 && isDigit(name.at(end - 1)))
        --end;
    return name.first(end);
}

/// The folders of the files, with a slash behind them, in the order in which they are first seen.
QStringList foldersOf(const QStringList &paths)
{
    QStringList folders;
    for (const QString &path : paths)
        folders << QString(QVString::deletingLastPathComponent(path) + u'/');
    folders.removeDuplicates();
    return folders;
}

/// What the numbers of the files follow, as the beginnings of whole paths.
QStringList stemsOf(const std::optional<QString> &prefix, const QStringList &paths)
{
    QStringList stems;
    for (const QString &path : paths) {
        const QString name = prefix ? *prefix : withoutTrailingDigits(QVString::fileNameMinusExtension(path));
        stems << QString(QVString::deletingLastPathComponent(path) + u'/' + name);
    }
    stems.removeDuplicates();
    return stems;
}

qint64 smallestUniqueNumber(const std::optional<QString> &prefix, const QStringList &paths, Folders &folders)
{
    const QStringList stems = stemsOf(prefix, paths);
    qint64 largest = 0;
    for (const QString &folder : foldersOf(paths)) {
        for (const QString &name : folders.namesIn(folder)) {
            const QString path = folder + name;
            const auto stem =
                std::find_if(stems.cbegin(), stems.cend(), [&](const QString &text) { return path.startsWith(text); });
            if (stem == stems.cend())
                continue;
            const QString bare = QVString::stringByReplacingExtension(path, QString());
            largest = std::max(largest, fileNumberFromName(bare, stem->size()).number);
        }
    }
    return largest + 1;
}

/// Which paths are taken while files move one after the other.
class PathsTaken
{
public:
    explicit PathsTaken(Folders &folders)
        : m_folders(folders)
    {}

    /// False when something is there already; nothing moves then.
    bool move(const QString &from, const QString &to)
    {
        QSet<QString> &names = namesIn(QVString::deletingLastPathComponent(to));
        const QString name = to.section(u'/', -1);
        if (name.isEmpty() || QVString::deletingLastPathComponent(from) != QVString::deletingLastPathComponent(to) ||
            names.contains(name))
            return false;
        names.remove(from.section(u'/', -1));
        names.insert(name);
        return true;
    }

private:
    QSet<QString> &namesIn(const QString &folder)
    {
        auto known = m_names.find(folder);
        if (known == m_names.end()) {
            const QStringList &names = m_folders.namesIn(QString(folder + u'/'));
            known = m_names.insert(folder, QSet<QString>(names.cbegin(), names.cend()));
        }
        return *known;
    }

    Folders &m_folders;
    QHash<QString, QSet<QString>> m_names;
};

/// The new path by the style; nothing where the file is passed over. Counts `number` on.
std::optional<QString> renamed(const QString &path, const RenameSettings &settings, qint64 &number)
{
    const QString name = QVString::fileNameMinusExtension(path);
    const QString extension = QVString::pathExtension(path);
    const QString folder = QVString::deletingLastPathComponent(path);
    switch (settings.style) {
    case Style::ReplacePrefix:
        if (!name.startsWith(settings.oldPrefix))
            return {};
        return QVString::stringByAppendingFile(
            folder, QString(settings.newPrefix + name.sliced(settings.oldPrefix.size())), extension);
    case Style::Renumber:
        return QVString::stringByAppendingFile(folder, numbered(withoutTrailingDigits(name), number++), extension);
    case Style::Extension:
        if (QVString::isFuzzyEqualToString(extension, settings.extension))
            return {};
        return QVString::stringByReplacingExtension(path, settings.extension);
    case Style::NewNames:
        return QVString::stringByAppendingFile(folder, numbered(settings.prefix, number++), extension);
    }
    return {};
}

}

TrailingNumber fileNumberFromName(const QString &name, qsizetype prefixLength)
{
    const qsizetype digits = name.size() - withoutTrailingDigits(name).size();
    const qsizetype count = std::clamp<qsizetype>(name.size() - prefixLength, 0, digits);
    return {name.last(std::min<qsizetype>(count, kMostDigits)).toLongLong(), static_cast<int>(count)};
}

qint64 smallestUniqueNumberForPrefix(const std::optional<QString> &prefix, const QStringList &paths,
                                     const RenamePlan::Listing &listing)
{
    Folders folders(listing);
    return smallestUniqueNumber(prefix, paths, folders);
}

RenamePlan::RenamePlan(const RenameSettings &settings, const QStringList &paths, const Listing &listing)
{
    Folders folders(listing);
    qint64 number = 1;
    if (settings.style == Style::Renumber)
        number = std::max(settings.renumberFrom, smallestUniqueNumber({}, paths, folders));
    else if (settings.style == Style::NewNames)
        number = std::max(settings.completeFrom.value_or(1), smallestUniqueNumber(settings.prefix, paths, folders));
    PathsTaken taken(folders);
    for (const QString &path : paths) {
        Step step{path, {}};
        const auto newPath = renamed(path, settings, number);
        if (newPath && !QVString::isFuzzyEqualToString(*newPath, path)) {
            step.newPath = *newPath;
            step.clashes = !taken.move(path, *newPath);
        }
        m_steps.append(step);
    }
}

qsizetype RenamePlan::renamedCount() const
{
    return std::count_if(m_steps.cbegin(), m_steps.cend(), [](const Step &step) { return !step.newPath.isEmpty(); });
}

bool RenamePlan::hasClashes() const
{
    return std::any_of(m_steps.cbegin(), m_steps.cend(), [](const Step &step) { return step.clashes; });
}
