#include "PhotoExport.h"

#include "MainThreadAnswer.h"
#include "SaveImage.h"
#include "SourceFiles.h"
#include "StringUtilities.h"
#include "UniqueFileName.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QTextBoundaryFinder>
#include <QThread>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include <unistd.h>

namespace {

/// What became of one photo.
struct Exported
{
    QString path;             ///< empty when it failed
    QString reason;           ///< why it failed; empty also when it was given up
    QString reservation = {}; ///< what is not as it should be in what was written
};

/// Free names in the folder for all photos, given in their order: the workers would come to them in any.
QStringList freePaths(const ExportOrder &order, const QStringList &sourceFiles, const QString &extension)
{
    QStringList paths;
    const QString &folder = order.folder;
    QSet<QString> taken = SourceFiles::namesIn(folder, sourceFiles);
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

/// Once the pixels were made.
QString reservationAbout(const Image &shown)
{
    QStringList texts;
    if (shown.isDamaged())
        texts << PhotoExport::tr("The file of the photo is damaged. What could be read of it was exported.");
    if (shown.lacksEffects())
        texts << PhotoExport::tr("The effects could not be applied.");
    return texts.join(QLatin1Char(' '));
}

/// Pictures so large are made one at a time, in all exports together: the pixels of one, and its file before it is
/// written, take gigabytes.
class LargePictureTurn
{
public:
    LargePictureTurn(QSize size, const std::atomic<bool> &cancelled)
    {
        constexpr qint64 largePicture = 40'000'000; // pixels
        constexpr std::chrono::milliseconds cancellationCheck(20);
        const bool isLarge = qint64(size.width()) * size.height() > largePicture;
        while (isLarge && !cancelled && !m_turn.try_lock_for(cancellationCheck)) {
        }
    }

private:
    static std::timed_mutex &mutex()
    {
        static std::timed_mutex instance;
        return instance;
    }
    std::unique_lock<std::timed_mutex> m_turn{mutex(), std::defer_lock};
};

/// `request` comes with the path and with what is allowed there.
Exported exportPhoto(const ExportedPhoto &photo, const ExportSettings &settings, SaveRequest request)
{
    const Image shown = photo.recipe.open().shown;
    if (shown.isNull())
        return {{}, whyUnreadable(photo.recipe)};
    request.type = typeForFormat(settings.format);
    request.compression = settings.compression;
    request.fullChroma = settings.keepsFullChroma();
    request.notes = shown.notes();
    const QSize size = finalImageSize(shown.size(), settings.sizeOption);
    const LargePictureTurn turn(size, *request.cancelled);
    if (SaveImageCore(size.width(), size.height(), shown, request))
        return {request.path, {}, reservationAbout(shown)};
    if (*request.cancelled)
        return {};
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
    QStringList sourceFiles; ///< as they were at the start
    std::function<std::optional<QStringList>()> presentSourceFiles;
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
            paths = freePaths(order, sourceFiles, extension);
            if (::access(QFile::encodeName(order.folder).constData(), W_OK) != 0) {
                const QString reason = qt_error_string(errno);
                obstacle = PhotoExport::tr("The folder cannot be written to: %1").arg(reason);
            }
            return;
        }
        paths = {pathForFormat(order.path, order.settings.format)};
        isRefused = SourceFiles::isAmong(sourceFiles, paths.first(), *cancelled);
    }

    /// Asked when the file is ready: photos may have come into the library meanwhile, and while this looks at them.
    bool mayReplace(const QString &path)
    {
        QSet<QString> harmless;
        for (;;) {
            const auto files = presentSourceFiles();
            if (!files)
                return false;
            const QSet<QString> present(files->begin(), files->end());
            const QStringList added = (present - harmless).values();
            if (added.isEmpty())
                return true;
            isRefused = SourceFiles::isAmong(added, path, *cancelled);
            if (isRefused || *cancelled)
                return false;
            harmless = present;
        }
    }

    void exportAt(int i)
    {
        if (*cancelled || isRefused)
            return;
        Exported &result = results[size_t(i)];
        if (obstacle.isEmpty())
            result = exportPhoto(order.photos.at(i), order.settings, requestFor(paths.at(i)));
        else
            result.reason = obstacle;
        ++done;
    }

    SaveRequest requestFor(const QString &path)
    {
        SaveRequest request;
        request.path = path;
        request.unique = order.path.isEmpty(); // nothing is ever replaced in a folder
        if (!request.unique)
            request.mayReplace = [this, path] { return mayReplace(path); };
        request.cancelled = cancelled.get();
        return request;
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
                if (!result.reservation.isEmpty())
                    outcome.reservations << ExportFailure{order.photos.at(i).name, result.reservation};
            } else if (!result.reason.isEmpty() && !isRefused) {
                outcome.failures << ExportFailure{order.photos.at(i).name, result.reason};
            }
        }
        return outcome;
    }
};

QString PhotoExport::nameFor(const QString &path)
{
    constexpr qsizetype mostBytes = 230; // of the 255 that file systems take
    const QString name = QVString::fileNameMinusExtension(path);
    QTextBoundaryFinder border(QTextBoundaryFinder::Grapheme, name);
    border.toEnd();
    qsizetype end = name.size();
    while (end > 0 && QFile::encodeName(name.left(end)).size() > mostBytes)
        end = border.toPreviousBoundary();
    return name.left(end);
}

PhotoExport::PhotoExport(QObject *parent)
    : QObject(parent)
{}

PhotoExport::~PhotoExport()
{
    cancel();
}

void PhotoExport::start(const ExportOrder &order, const std::function<QStringList()> &sourceFiles)
{
    Q_ASSERT(!m_workers && (order.path.isEmpty() || order.photos.size() == 1));
    const auto run = std::make_shared<Run>();
    run->order = order;
    run->cancelled = m_cancelled;
    m_sourceFiles = sourceFiles ? sourceFiles : [] { return QStringList(); };
    run->sourceFiles = m_sourceFiles();
    run->presentSourceFiles = [toHere = m_link.toHere(), cancelled = m_cancelled] {
        const auto answer = std::make_shared<MainThreadAnswer<QStringList>>();
        toHere([answer](PhotoExport &here) { answer->give(here.m_sourceFiles()); });
        return answer->wait(*cancelled);
    };
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
