#include "PhotoExport.h"

#include "FileIdentity.h"
#include "SaveImage.h"
#include "StringUtilities.h"
#include "UniqueFileName.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <vector>

#include <unistd.h>

namespace {

/// What became of one photo.
struct Exported
{
    QString path; ///< empty when it failed
    QString reason;
};

/// The names of those files that belong into the folder, also of missing ones, in small letters.
QSet<QString> namesIn(const QString &folder, const QStringList &files)
{
    const QString paths[] = {QDir::cleanPath(folder), QFileInfo(folder).canonicalFilePath()};
    QSet<QString> names;
    for (const QString &file : files) {
        const QString parent = QVString::deletingLastPathComponent(file);
        if (parent == paths[0] || parent == paths[1])
            names.insert(QVString::lastPathComponent(file).toLower());
    }
    return names;
}

/// Free names in the folder for all photos, given in their order: the workers would come to them in any.
QStringList freePaths(const ExportOrder &order, const QString &extension)
{
    QStringList paths;
    const QString &folder = order.folder;
    QSet<QString> taken = namesIn(folder, order.sourceFiles);
    QHash<QString, int> namesakes;
    for (const ExportedPhoto &photo : order.photos) {
        QString name = UniqueFileName(folder, photo.name, extension);
        int &number = namesakes[name.toLower()];
        while (taken.contains(name.toLower()))
            name = UniqueFileName(folder, photo.name + QLatin1Char('-') + QString::number(++number), extension);
        taken.insert(name.toLower());
        paths << QVString::appendingPathComponent(folder, name);
    }
    return paths;
}

QString whyUnreadable(const PictureRecipe &recipe)
{
    QString why;
    if (recipe.path.isEmpty() || !QFileInfo::exists(recipe.path))
        return PhotoExport::tr("The file of the photo is missing.");
    (void)Image::fromFile(recipe.path, &why);
    return why.isEmpty() ? PhotoExport::tr("The picture could not be read.") : why;
}

/// With a path that is `unique`, nothing is ever replaced.
Exported exportPhoto(const ExportedPhoto &photo, const QString &path, bool unique, const ExportSettings &settings,
                     const std::atomic<bool> &cancelled)
{
    const Image shown = photo.recipe.open().shown;
    if (shown.isNull())
        return {{}, whyUnreadable(photo.recipe)};
    SaveRequest request;
    request.path = path;
    request.type = typeForFormat(settings.format);
    request.compression = settings.compression;
    request.unique = unique;
    request.fullChroma = settings.keepsFullChroma();
    request.notes = shown.notes();
    request.cancelled = &cancelled;
    const QSize size = finalImageSize(shown.size(), settings.sizeOption);
    if (SaveImageCore(size.width(), size.height(), shown, request))
        return {request.path, {}};
    if (!request.writeFailed)
        return {{}, PhotoExport::tr("The picture could not be read, or is too large for this format.")};
    return {{}, PhotoExport::tr("The file could not be written: %1").arg(request.reason)};
}

/// Whole pictures take much memory each.
int workersFor(const ExportOrder &order)
{
    constexpr int mostWithWholePictures = 2;
    const int processors = std::max(QThread::idealThreadCount(), 1);
    const bool isWhole = order.settings.sizeOption < 1 || order.settings.sizeOption > 4;
    return isWhole ? std::min(processors, mostWithWholePictures) : processors;
}

}

/// What the workers share. Each writes to its own place among the results.
struct PhotoExport::Run
{
    ExportOrder order;
    std::shared_ptr<std::atomic<bool>> cancelled;
    QStringList paths; ///< one for each photo, chosen before the first is made
    QString obstacle;  ///< why no photo at all can be written
    bool isRefused = false;
    std::atomic<int> done = 0;
    std::vector<Exported> results;

    void choosePaths()
    {
        const QString extension = extensionForFormat(order.settings.format);
        if (order.path.isEmpty()) {
            paths = freePaths(order, extension);
            if (::access(QFile::encodeName(order.folder).constData(), W_OK) != 0) {
                const QString reason = qt_error_string(errno);
                obstacle = PhotoExport::tr("The folder cannot be written to: %1").arg(reason);
            }
            return;
        }
        paths = {pathForFormat(order.path, order.settings.format)};
        isRefused = leadsToOneOf(order.sourceFiles, paths.first(), *cancelled);
    }

    void exportAt(int i)
    {
        if (*cancelled || isRefused)
            return;
        Exported &result = results[size_t(i)];
        if (obstacle.isEmpty())
            result = exportPhoto(order.photos.at(i), paths.at(i), order.path.isEmpty(), order.settings, *cancelled);
        else
            result.reason = obstacle;
        ++done;
    }

    ExportOutcome outcome() const
    {
        ExportOutcome outcome;
        outcome.isRefused = isRefused;
        outcome.isCancelled = *cancelled;
        for (int i = 0; i < order.photos.size(); ++i) {
            const Exported &result = results[size_t(i)];
            if (!result.path.isEmpty()) {
                outcome.written << result.path;
                outcome.bytes += QFileInfo(result.path).size();
            } else if (!outcome.isCancelled && !isRefused) {
                outcome.failures << ExportFailure{order.photos.at(i).name, result.reason};
            }
        }
        return outcome;
    }
};

PhotoExport::PhotoExport(QObject *parent)
    : QObject(parent)
{}

PhotoExport::~PhotoExport()
{
    cancel();
}

void PhotoExport::start(const ExportOrder &order)
{
    Q_ASSERT(!m_workers && (order.path.isEmpty() || order.photos.size() == 1));
    const auto run = std::make_shared<Run>();
    run->order = order;
    run->cancelled = m_cancelled;
    const int count = int(order.photos.size());
    run->results.resize(size_t(count));
    m_workers = std::make_unique<DispatchQueue>(QStringLiteral("hmphoto.export"), workersFor(order),
                                                DispatchQueue::AtEnd::LeaveBehind);
    m_workers->barrierAsync([run] { run->choosePaths(); });
    for (int i = 0; i < count; ++i) {
        m_workers->async([run, i, count, toHere = m_link.toHere()] {
            run->exportAt(i);
            toHere([done = run->done.load(), count](PhotoExport &here) { Q_EMIT here.progressed(done, count); });
        });
    }
    m_workers->barrierAsync([run, toHere = m_link.toHere()] {
        toHere([outcome = run->outcome()](PhotoExport &here) { Q_EMIT here.finished(outcome); });
    });
}

namespace {

/// The path with the links among its folders resolved.
QString throughFolders(const QString &path)
{
    const QFileInfo info(path);
    const QString folder = QFileInfo(info.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? QDir::cleanPath(info.absoluteFilePath())
                            : QVString::appendingPathComponent(folder, info.fileName());
}

}

bool PhotoExport::leadsToOneOf(const QStringList &files, const QString &path, const std::atomic<bool> &cancelled)
{
    const QString clean = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    if (files.contains(clean) || files.contains(throughFolders(path)))
        return true;
    const auto target = examineLinkedFile(QFile::encodeName(path).constData());
    if (!target)
        return false;
    return std::any_of(files.begin(), files.end(), [&](const QString &file) {
        const auto source = cancelled ? std::nullopt : examineLinkedFile(QFile::encodeName(file).constData());
        return source && source->device == target->device && source->identity.inode == target->identity.inode;
    });
}
