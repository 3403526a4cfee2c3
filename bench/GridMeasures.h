#pragma once

#include <QStringList>

class PairRunner;

/// What somebody sees and feels who opens a folder, measured through the grid and its event loop.
namespace GridMeasures {

/// Makes the thumbnails of all the photos: how long, against vipsthumbnail; the longest turn of the event loop; the
/// most memory.
void makeThumbnails(PairRunner &runner, const QStringList &photos, const QString &folder);

/// From showing the folder until every tile in sight has been painted with the small picture in its file, which has
/// the colour green.
void paintFirst(PairRunner &runner, const QStringList &photos);

}
