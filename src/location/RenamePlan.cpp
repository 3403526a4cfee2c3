#include "RenamePlan.h"

#include "ImageFormat.h"
#include "StringUtilities.h"

#include <QFile>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <unordered_map>

namespace {

using Style = RenameSettings::Style;
using Folder = FolderNames::Folder;
using Obstacle = RenamePlan::Obstacle;

constexpr int kMostDigits = 18; ///< that a number surely holds

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

QString withoutTrailingDigits(const QString &name)
{
    qsizetype end = name.size();
    while (end > 0 && isDigit(name.at(end - 1)))
        --end;
    return name.first(end);
}

/// What the numbers of a folder's files follow, with the order in which it was first seen.
using Stems = QHash<QString, qsizetype>;

/// The number after the first of the stems with which the name begins; 0 when there is none.
qint64 numberOf(const QString &name, const Stems &stems, const QSet<qsizetype> &lengths)
{
    auto first = stems.cend();
    for (const qsizetype length : lengths) {
        const auto stem = length <= name.size() ? stems.constFind(name.first(length)) : stems.cend();
        if (stem != stems.cend() && (first == stems.cend() || *stem < *first))
            first = stem;
    }
    return first == stems.cend()
               ? 0
               : fileNumberFromName(QVString::fileNameMinusExtension(name), first.key().size()).number;
}

qint64 largestNumber(const Folder &folder, const Stems &stems)
{
    QSet<qsizetype> lengths; // few, while there may be as many stems as files
    for (auto stem = stems.cbegin(); stem != stems.cend(); ++stem)
        lengths.insert(stem.key().size());
    qint64 largest = 0;
    for (const auto &names : {folder.names, folder.reserved})
        for (const QString &name : names)
            largest = std::max(largest, numberOf(name, stems, lengths));
    return largest;
}

QString numbered(const QString &stem, qint64 number)
{
    constexpr int kLeastDigits = 4;
    return stem + QStringLiteral("%1").arg(number, kLeastDigits, 10, QLatin1Char('0'));
}

QString nameOf(const QString &stem, const QString &extension)
{
    return extension.isEmpty() ? stem : QString(stem + u'.' + extension);
}

/// A file's name in its parts.
struct Name
{
    QString stem;
    QString extension;
    [[nodiscard]] QString whole() const { return nameOf(stem, extension); }
};

/// By the style; nothing where the file is passed over. Counts `number` on.
std::optional<Name> renamed(const Name &name, const RenameSettings &settings, qint64 &number)
{
    switch (settings.style) {
    case Style::ReplacePrefix:
        if (!name.stem.startsWith(settings.oldPrefix))
            return {};
        return Name{settings.newPrefix + name.stem.sliced(settings.oldPrefix.size()), name.extension};
    case Style::Renumber:
        return Name{numbered(withoutTrailingDigits(name.stem), number++), name.extension};
    case Style::Extension:
        if (QVString::isFuzzyEqualToString(name.extension, settings.extension))
            return {};
        return Name{name.stem, settings.extension};
    case Style::NewNames:
        return Name{numbered(settings.prefix, number++), name.extension};
    }
    return {};
}

/// What can be said of a name without a look at its folder.
Obstacle obstacleIn(const QString &name)
{
    constexpr qsizetype kMostBytes = 255;
    if (name == u"." || name == u".." || name.contains(u'/') || name.contains(QChar::Null) || !name.isValidUtf16())
        return Obstacle::NoName;
    return QFile::encodeName(name).size() > kMostBytes ? Obstacle::TooLong : Obstacle::None;
}

/// A folder while its files move one after the other.
class ChangingFolder
{
public:
    explicit ChangingFolder(const Folder &folder)
        : m_folder(folder)
    {}

    [[nodiscard]] bool holds(const QString &name) const
    {
        return m_come.contains(m_folder.keyOf(name)) || isInPlace(name);
    }
    /// What stood there before anything moved, and still does.
    [[nodiscard]] bool isInPlace(const QString &name) const
    {
        const QString key = m_folder.keyOf(name);
        return m_folder.keys.contains(key) && !m_gone.contains(key);
    }
    void move(const QString &from, const QString &to)
    {
        m_come.remove(m_folder.keyOf(from));
        m_gone.insert(m_folder.keyOf(from));
        m_come.insert(m_folder.keyOf(to));
    }

    /// The sidecars that go with a picture to its new name, as names. Those of pictures that have moved there do not.
    [[nodiscard]] QList<RenamePlan::Move> sidecarsOf(const Name &from, const Name &to) const
    {
        QList<RenamePlan::Move> moves;
        const QString name = from.whole();
        const auto add = [&](const QString &stem, const QString &newStem) {
            if (stem == newStem || m_folder.owners.value(stem, name) != name)
                return;
            for (const QString &sidecar : m_folder.sidecars.value(stem))
                if (isInPlace(sidecar))
                    moves.append({sidecar, newStem + sidecar.sliced(stem.size())});
        };
        if (m_folder.sidecars.isEmpty())
            return moves;
        add(name, to.whole());
        if (from.stem != name)
            add(from.stem, to.stem);
        return moves;
    }
    /// Whether a sidecar that is not the picture's stands where it will have its own.
    [[nodiscard]] bool meetsSidecar(const Name &from, const Name &to) const
    {
        const auto hasAny = [this](const QString &stem) {
            const QStringList sidecars = m_folder.sidecars.value(stem);
            return std::any_of(sidecars.cbegin(), sidecars.cend(),
                               [this](const QString &name) { return isInPlace(name); });
        };
        return hasAny(to.whole()) || (to.stem != from.stem && hasAny(to.stem));
    }

private:
    const Folder &m_folder;
    QSet<QString> m_come; ///< keys
    QSet<QString> m_gone; ///< the same of those that stood there
};

/// Makes the steps one after the other, as if each were taken at once.
class Planner
{
public:
    Planner(const RenameSettings &settings, FolderNames &folders, qint64 number)
        : m_settings(settings)
        , m_folders(folders)
        , m_number(number)
    {}

    RenamePlan::Step stepFor(const QString &path)
    {
        const QString folder = QVString::deletingLastPathComponent(path);
        const Folder &read = m_folders.at(folder);
        const QString place = QVString::appendingPathComponent(read.place, QVString::lastPathComponent(path));
        RenamePlan::Step step{.oldPath = path};
        if (const auto before = m_newNames.constFind(place); before != m_newNames.cend()) {
            step.isMovedBefore = true;
            step.newPath = before->isEmpty() ? QString() : pathOf(folder, *before);
            return step;
        }
        QString &newName = m_newNames[place];
        const Name name{QVString::fileNameMinusExtension(path), QVString::pathExtension(path)};
        const auto wanted = renamed(name, m_settings, m_number);
        if (!wanted || QVString::isFuzzyEqualToString(wanted->whole(), name.whole()))
            return step;
        newName = wanted->whole();
        step.newPath = pathOf(folder, newName);
        move(step, name, *wanted, read, m_changing.try_emplace(read.place, read).first->second);
        return step;
    }

private:
    static QString pathOf(const QString &folder, const QString &name)
    {
        return folder.endsWith(u'/') ? QString(folder + name) : QString(folder + u'/' + name);
    }

    /// Why nothing is known of the file, or it is not there.
    [[nodiscard]] Obstacle obstacleAt(const QString &path, const Folder &read, const ChangingFolder &folder) const
    {
        if (!read.failure.isEmpty())
            return Obstacle::Unreadable;
        const QString name = QVString::lastPathComponent(path);
        const bool isThere =
            folder.isInPlace(name) || (!read.keys.contains(read.keyOf(name)) && m_folders.isOnDisk(path));
        return isThere ? Obstacle::None : Obstacle::Missing;
    }
    static Obstacle obstacleTo(const Name &to, const Folder &read, const ChangingFolder &folder)
    {
        if (to.stem.isEmpty())
            return Obstacle::NoName;
        if (const Obstacle obstacle = obstacleIn(to.whole()); obstacle != Obstacle::None)
            return obstacle;
        if (folder.holds(to.whole()))
            return Obstacle::Taken;
        return read.reserved.contains(to.whole()) ? Obstacle::Reserved : Obstacle::None;
    }
    void move(RenamePlan::Step &step, const Name &from, const Name &to, const Folder &read,
              ChangingFolder &folder) const
    {
        const QString folderPath = QVString::deletingLastPathComponent(step.oldPath);
        const auto sidecars = folder.sidecarsOf(from, to);
        step.obstacle = obstacleTo(to, read, folder);
        if (step.obstacle == Obstacle::None)
            step.obstacle = obstacleAt(step.oldPath, read, folder);
        step.detail = read.failure;
        for (const RenamePlan::Move &sidecar : sidecars) {
            step.sidecars.append({pathOf(folderPath, sidecar.from), pathOf(folderPath, sidecar.to)});
            if (step.obstacle != Obstacle::None)
                continue;
            step.obstacle = folder.holds(sidecar.to) ? Obstacle::SidecarTaken : obstacleIn(sidecar.to);
            step.detail = sidecar.from;
        }
        if (step.obstacle != Obstacle::None)
            return;
        folder.move(from.whole(), to.whole());
        for (const RenamePlan::Move &sidecar : sidecars)
            folder.move(sidecar.from, sidecar.to);
        step.meetsSidecar = folder.meetsSidecar(from, to);
    }

    const RenameSettings &m_settings;
    FolderNames &m_folders;
    qint64 m_number;
    QHash<QString, QString> m_newNames;                     ///< by place; empty where the file keeps its name
    std::unordered_map<QString, ChangingFolder> m_changing; ///< by place
};

}

QString beginningOfName(const QString &path)
{
    const QString stem = QVString::fileNameMinusExtension(path);
    const auto end =
        std::find_if(stem.cbegin(), stem.cend(), [](QChar at) { return at.isSpace() || at.isDigit() || at.isPunct(); });
    return stem.first(end - stem.cbegin());
}

TrailingNumber fileNumberFromName(const QString &name, qsizetype prefixLength)
{
    const qsizetype digits = name.size() - withoutTrailingDigits(name).size();
    const qsizetype count = std::clamp<qsizetype>(name.size() - prefixLength, 0, digits);
    return {name.last(std::min<qsizetype>(count, kMostDigits)).toLongLong(), static_cast<int>(count)};
}

qint64 smallestUniqueNumberForPrefix(const std::optional<QString> &prefix, const QStringList &paths,
                                     FolderNames &folders)
{
    QHash<QString, Stems> stems; // by folder
    for (const QString &path : paths) {
        Stems &here = stems[QVString::deletingLastPathComponent(path)];
        const QString stem = prefix ? *prefix : withoutTrailingDigits(QVString::fileNameMinusExtension(path));
        if (!here.contains(stem))
            here.insert(stem, here.size());
    }
    qint64 largest = 0;
    for (auto folder = stems.cbegin(); folder != stems.cend(); ++folder)
        largest = std::max(largest, largestNumber(folders.at(folder.key()), *folder));
    return largest + 1;
}

RenamePlan::RenamePlan(const RenameSettings &settings, const QStringList &paths, FolderNames folders)
{
    qint64 number = 1;
    if (settings.style == Style::Renumber)
        number = std::max(settings.renumberFrom, smallestUniqueNumberForPrefix({}, paths, folders));
    else if (settings.style == Style::NewNames)
        number =
            std::max(settings.completeFrom.value_or(1), smallestUniqueNumberForPrefix(settings.prefix, paths, folders));
    Planner planner(settings, folders, number);
    for (const QString &path : paths)
        m_steps.append(settings.isComplete() ? planner.stepFor(path) : Step{.oldPath = path});
}

namespace {

bool isRenamed(const RenamePlan::Step &step)
{
    return !step.newPath.isEmpty() && !step.isMovedBefore;
}

bool isBlocked(const RenamePlan::Step &step)
{
    return step.obstacle != Obstacle::None;
}

}

qsizetype RenamePlan::renamedCount() const
{
    return std::count_if(m_steps.cbegin(), m_steps.cend(), isRenamed);
}

qsizetype RenamePlan::obstacleCount() const
{
    return std::count_if(m_steps.cbegin(), m_steps.cend(), isBlocked);
}

qsizetype RenamePlan::renamedBeforeObstacle() const
{
    return std::count_if(m_steps.cbegin(), std::find_if(m_steps.cbegin(), m_steps.cend(), isBlocked), isRenamed);
}
