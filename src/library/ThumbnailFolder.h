#pragma once

#include "QVAsyncOperation.h"

#include <QSet>
#include <QString>
#include <QStringList>

/// What emptying the folder of cached thumbnails came to.
struct ClearedThumbnails
{
    int files = 0;     ///< thumbnails that were there
    quint64 bytes = 0; ///< of those that were deleted
};

/// Deletes every thumbnail in the folder. Blocks: any thread but the main one.
[[nodiscard]] ClearedThumbnails clearThumbnailFolder(const QString &folder);

/// What the user is told about it: a title and a sentence.
struct ClearedThumbnailsReport
{
    QString title;
    QString message;
};
[[nodiscard]] ClearedThumbnailsReport reportOf(const ClearedThumbnails &cleared);

/// Removes cached thumbnails that no photo uses any more, once at every start, in the background.
class PIClearOperation final : public QVAsyncOperation
{
public:
    /// `photoGuids` name the thumbnails that stay.
    PIClearOperation(const QString &folder, const QStringList &photoGuids);

protected:
    [[nodiscard]] QString operationName() const override;
    [[nodiscard]] bool performOperation() override;

private:
    QString m_folder;
    QStringList m_photoGuids;
};
