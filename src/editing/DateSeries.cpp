#include "DateSeries.h"

#include "FileDates.h"
#include "FileFinder.h"
#include "FileIdentity.h"
#include "LogString.h"
#include "PhotoLibrary.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QSet>

#include <utility>

namespace {

qint64 secondsOf(int unit)
{
    switch (unit) {
    case DateSeries::Minutes:
        return 60;
    case DateSeries::Hours:
        return 3600;
    case DateSeries::Days:
        return 86400;
    default:
        return 1;
    }
}

}

std::optional<qint64> DateSeries::dateAt(qint64 index, qint64 base) const
{
    constexpr qint64 kYear1 = -62'135'596'800;
    constexpr qint64 kYear10000 = 253'402'300'800;
    qint64 date = 0;
    if (__builtin_mul_overflow(secondsOf(whatToChange), increment, &date) ||
        __builtin_mul_overflow(date, index, &date) || __builtin_add_overflow(date, base, &date))
        return {};
    return date >= kYear1 && date < kYear10000 ? std::optional(date) : std::nullopt;
}

QList<qsizetype> DateSeries::datedFiles(const QStringList &paths)
{
    QList<qsizetype> places;
    QSet<QString> seen{QString(), paths.value(0)};
    for (qsizetype i = 1; i < paths.size(); ++i) {
        if (!seen.contains(paths.at(i)))
            places.append(i);
        seen.insert(paths.at(i));
    }
    return places;
}

QStringList DateSeries::pathsOf(const PIGroup::PhotoList &photos)
{
    QStringList paths;
    for (const auto &photo : photos)
        paths.append(photo->isFileLost() ? QString() : photo->fileRef()->path());
    return paths;
}

namespace {

/// Whether the file has its date now.
bool redate(const QString &path, std::optional<qint64> date)
{
    QString reason = date ? QString() : QStringLiteral("There is no such date.");
    if (date && FileDates::setDate(path, *date, &reason))
        return true;
    LogString("Can't set the date of %@. %@", path, reason);
    return false;
}

/// Device and inode, links followed.
using FileKey = std::pair<quint64, quint64>;
constexpr FileKey kNoFile{0, 0};

FileKey fileAt(const QString &path)
{
    const auto file = examineLinkedFile(QFile::encodeName(path).constData());
    return file ? FileKey{file->device, file->identity.inode} : kNoFile;
}

QString carryOut(const DateSeries &series, const QStringList &paths, const std::stop_token &stop,
                 const FileFinder::Preparation &prepare, const FileRun::Tell &tell)
{
    const auto base = FileDates::dateOf(paths.value(0));
    if (!base)
        return QCoreApplication::translate("DateSeries", "The date of the first photo's file can't be read.");
    QHash<FileKey, bool> isDated{{fileAt(paths.first()), false}}; // there may be more paths to a file
    for (const qsizetype i : DateSeries::datedFiles(paths)) {
        if (stop.stop_requested())
            break;
        const QString &path = paths.at(i);
        const FileKey file = fileAt(path);
        if (file == kNoFile || !isDated.contains(file))
            isDated[file] = redate(path, series.dateAt(i, *base));
        if (isDated.value(file))
            tell({i, path, prepare ? prepare(path) : QByteArray()}); // the file is told from others by its date, too
    }
    return {};
}

}

std::unique_ptr<FileRun> DateSeries::start(LibraryEditor &editor, DispatchQueue &queue,
                                           const PIGroup::PhotoList &photos, const FileRun::Progress &progress,
                                           const FileRun::Ended &ended) const
{
    const auto files = FileRun::filesOf(photos, editor.library());
    return std::make_unique<FileRun>(
        editor, queue, files,
        [series = *this, paths = pathsOf(photos), prepare = editor.library().fileFinder().preparation()](
            const std::stop_token &stop, const FileRun::Tell &tell) {
            return carryOut(series, paths, stop, prepare, tell);
        },
        progress, ended);
}
