#include "Trash.h"

#include "FileWriter.h"
#include "StandardFolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

#include <optional>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("Trash", text);
}

/// Whether the path is that of something put away as the trash rules have it: in the "files" folder of the user's own
/// trash or of a volume's, with the note of where it came from beside it.
bool isInTrash(const QString &path)
{
    const QFileInfo file(path);
    const QDir files = file.dir();
    if (!file.isAbsolute() || files.dirName() != QLatin1String("files"))
        return false;
    const QString trash = QFileInfo(files.path()).path();
    const QString user = QString::number(::getuid());
    const QFileInfo own(standardFolderPath(StandardFolder::Trash).value_or(QString()));
    const bool isTrash = files.canonicalPath() == own.canonicalFilePath() ||
                         trash.endsWith(QLatin1String("/.Trash-") + user) ||
                         trash.endsWith(QLatin1String("/.Trash/") + user);
    return isTrash &&
           QFileInfo::exists(trash + QLatin1String("/info/") + file.fileName() + QLatin1String(".trashinfo"));
}

/// Without the folder that is to hold the trash the file would be put below the folder that happens to be current.
void makeHomeOfTrash()
{
    if (const auto trash = standardFolderPath(StandardFolder::Trash))
        QDir().mkpath(*trash);
}

/// Why the file is not in the trash; nothing when it is.
std::optional<QString> recycleOne(const QString &path)
{
    QFile file(path);
    const bool isThere = QFileInfo(path).isSymLink() || QFileInfo::exists(path);
    if (!isThere)
        return tr("The file is not there any more.");
    if (!file.moveToTrash())
        return tr("There is no trash that could take it: %1").arg(file.errorString());
    const QString taken = file.fileName();
    if (isInTrash(taken))
        return std::nullopt;
    QFile::remove(QFileInfo(taken).dir().filePath(QStringLiteral("../info/") + QFileInfo(taken).fileName() +
                                                  QStringLiteral(".trashinfo")));
    QString reason;
    if (!FileWriter::renameNoReplace(taken, path, &reason))
        return tr("It was moved to “%1” and could not be moved back: %2").arg(taken, reason);
    return tr("There is no trash that could take it.");
}

}

QList<Trash::Failure> DesktopTrash::recycle(const QStringList &paths)
{
    makeHomeOfTrash();
    QList<Failure> failures;
    for (const QString &path : paths) {
        if (const auto reason = recycleOne(path))
            failures.append({path, *reason});
    }
    return failures;
}
