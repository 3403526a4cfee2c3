#pragma once

#include "DispatchQueue.h"
#include "ExportPreferences.h"
#include "MainThreadLink.h"
#include "PictureRecipe.h"

#include <QList>
#include <QObject>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>

/// One photo to be exported, copied so that it may change meanwhile.
struct ExportedPhoto
{
    PictureRecipe recipe;
    QString name; ///< of its file, without extension
};

/// What to export and where to.
struct ExportOrder
{
    QList<ExportedPhoto> photos;
    QString folder; ///< takes the photos under names that are free there
    QString path;   ///< instead of a folder: where the one photo goes, over whatever stands there
    ExportSettings settings;
};

struct ExportFailure
{
    QString name;
    QString reason;
};

struct ExportOutcome
{
    QStringList written; ///< paths, in the order of the photos
    qint64 bytes = 0;    ///< of them together
    QList<ExportFailure> failures;
    QList<ExportFailure> reservations; ///< about photos that were written, but not as they should be
    bool isRefused = false;            ///< the path leads to one of the source files; nothing was written
    bool isCancelled = false;          ///< photos that are neither written nor failed were given up
};

/// Exports photos in the background, several at a time: crop, effects and size applied, each file whole or not there at
/// all. Main thread.
class PhotoExport final : public QObject
{
    Q_OBJECT

public:
    explicit PhotoExport(QObject *parent = nullptr);
    /// Ends an export under way; files that are complete stay.
    ~PhotoExport() override;

    /// Once. `sourceFiles` gives the files that photos show: none of them, nor the place of a missing one, is written
    /// to. It is asked now and again, here, right before a file is replaced.
    void start(const ExportOrder &order, const std::function<QStringList()> &sourceFiles = {});
    void cancel() { *m_cancelled = true; }

    /// The name of the file without its extension, shortened so that any extension and a number have room behind it.
    [[nodiscard]] static QString nameFor(const QString &path);

Q_SIGNALS:
    void progressed(int done, int of);
    void finished(const ExportOutcome &outcome);

private:
    struct Run;

    std::function<QStringList()> m_sourceFiles;
    std::shared_ptr<std::atomic<bool>> m_cancelled = std::make_shared<std::atomic<bool>>(false);
    MainThreadLink<PhotoExport> m_link{*this};
    std::unique_ptr<DispatchQueue> m_workers; ///< last: its blocks end first
};
