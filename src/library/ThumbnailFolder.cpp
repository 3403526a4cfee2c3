#include "ThumbnailFolder.h"

#include "DirectoryReader.h"
#include "FormatMessage.h"
#include "StringUtilities.h"
#include "TextForPeople.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace {

/// Names of the thumbnails in the folder; other files in it are none of ours.
QStringList thumbnailNames(const QString &folder)
{
    QStringList names;
    const auto listing = readDirectory(folder);
    if (!listing)
        return names;
    for (const DirectoryEntry &entry : listing->entries) {
        if (entry.type == EntryType::File && QVString::pathExtension(entry.name) == QLatin1String("jpg"))
            names << entry.name;
    }
    return names;
}

}

ClearedThumbnails clearThumbnailFolder(const QString &folder)
{
    ClearedThumbnails cleared;
    for (const QString &name : thumbnailNames(folder)) {
        const QString path = QVString::appendingPathComponent(folder, name);
        const qint64 size = QFileInfo(path).size();
        ++cleared.files;
        if (QFile::remove(path))
            cleared.bytes += static_cast<quint64>(size);
    }
    return cleared;
}

ClearedThumbnailsReport reportOf(const ClearedThumbnails &cleared)
{
    const auto tr = [](const char *text) { return QCoreApplication::translate("ThumbnailFolder", text); };
    if (cleared.bytes == 0)
        return {tr("Cache already cleared."), tr("Nothing needed to be deleted.")};
    const QString items = cleared.files == 1 ? tr("1 item") : FormatMessage(tr("%d items"), {cleared.files});
    return {tr("Cache cleared."),
            FormatMessage(tr("%@ deleted. %@ reclaimed."), {items, FileSizeString(cleared.bytes)})};
}

PIClearOperation::PIClearOperation(const QString &folder, const QStringList &photoGuids)
    : m_folder(folder)
    , m_photoGuids(photoGuids)
{}

QString PIClearOperation::operationName() const
{
    return QStringLiteral("PIClearOperation");
}

bool PIClearOperation::performOperation()
{
    QSet<QString> kept;
    for (const QString &guid : std::as_const(m_photoGuids))
        kept.insert(guid + QStringLiteral(".jpg"));
    for (const QString &name : thumbnailNames(m_folder)) {
        if (!name.startsWith(u'.') && !kept.contains(name))
            QFile::remove(QVString::appendingPathComponent(m_folder, name));
    }
    return true;
}
