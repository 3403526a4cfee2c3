#include "ThumbnailGridModel.h"

#include "DateFormatter.h"
#include "PIFolder.h"
#include "PIPhoto.h"
#include "PlainText.h"

#include <QDateTime>
#include <QLocale>
#include <QSet>
#include <QStringList>

#include <algorithm>

namespace {

constexpr int kDatesKept = 20'000;

}

ThumbnailGridModel::ThumbnailGridModel(QObject *parent)
    : QAbstractListModel(parent)
    , m_dates(kDatesKept)
{}

ThumbnailGridModel::~ThumbnailGridModel() = default;

void ThumbnailGridModel::setFolder(const std::shared_ptr<PIFolder> &folder)
{
    m_folder = folder;
    reload();
}

void ThumbnailGridModel::reload()
{
    beginResetModel();
    // Shares the folder's list until the folder changes it, so that a change shows up here only when it is told of.
    m_photos = m_folder ? m_folder->photos() : QList<std::shared_ptr<PIPhoto>>();
    endResetModel();
}

std::shared_ptr<PIPhoto> ThumbnailGridModel::photo(int row) const
{
    return m_photos.value(row);
}

bool ThumbnailGridModel::isDateKnown(int row) const
{
    const auto shown = photo(row);
    return !shown || m_dates.contains(shown->guid());
}

void ThumbnailGridModel::learnDate(int row)
{
    const auto shown = photo(row);
    if (!shown)
        return;
    const double seconds = shown->fileRef() && !shown->isFileLost() ? shown->fileRef()->knownCreationTime() : 0;
    QString text;
    if (seconds != 0)
        text = g_dateFormatter.string(QDateTime::fromSecsSinceEpoch(qint64(seconds)).date());
    m_dates.insert(shown->guid(), new QString(text));
}

void ThumbnailGridModel::forgetDate(const PIPhoto &photo)
{
    m_dates.remove(photo.guid());
}

QItemSelection ThumbnailGridModel::itemSelection(const IndexSet &rows) const
{
    QItemSelection selection;
    selection.reserve(rows.ranges().size());
    for (const auto &range : rows.ranges())
        selection.append(QItemSelectionRange(index(int(range.first)), index(int(range.last))));
    return selection;
}

IndexSet ThumbnailGridModel::rowsOf(const QItemSelection &selection)
{
    QList<IndexSet::Range> ranges;
    ranges.reserve(selection.size());
    for (const auto &range : selection)
        ranges.append({range.top(), range.bottom()});
    std::sort(ranges.begin(), ranges.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    IndexSet rows;
    for (const auto &range : ranges)
        rows.add(range.first, range.last);
    return rows;
}

int ThumbnailGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_photos.size());
}

QVariant ThumbnailGridModel::data(const QModelIndex &index, int role) const
{
    const auto shown = index.isValid() ? photo(index.row()) : nullptr;
    if (!shown)
        return {};
    switch (role) {
    case PhotoRole:
        return QVariant::fromValue(shown);
    case CaptionRole:
        return shown->caption();
    case DateRole: {
        const QString *date = m_dates.object(shown->guid());
        return date ? *date : QString();
    }
    case Qt::DisplayRole:
    case FileNameRole:
        return fileName(*shown);
    case Qt::ToolTipRole:
        return plainText(toolTip(*shown));
    case MarkedRole:
        return shown->isMarked();
    case LostRole:
        return shown->isFileLost();
    case Qt::AccessibleTextRole:
        return spokenText(*shown);
    default:
        return {};
    }
}

QString ThumbnailGridModel::fileName(const PIPhoto &photo)
{
    if (!photo.fileRef())
        return {};
    const QString &path = photo.fileRef()->path();
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

QString ThumbnailGridModel::toolTip(const PIPhoto &photo)
{
    const QString name = fileName(photo);
    if (photo.isVolumeAway()) {
        const QString point = photo.fileRef()->mountPoint();
        return point.isEmpty() ? tr("%1\nVolume not mounted").arg(name)
                               : tr("%1\nVolume not mounted: %2").arg(name, point);
    }
    return photo.isFileLost() ? tr("%1\nFile missing").arg(name) : name;
}

QString ThumbnailGridModel::spokenText(const PIPhoto &photo)
{
    QStringList parts{fileName(photo)};
    if (!photo.caption().isEmpty())
        parts << photo.caption();
    if (photo.isMarked())
        parts << tr("marked");
    if (photo.isVolumeAway())
        parts << tr("volume not mounted");
    else if (photo.isFileLost())
        parts << tr("file missing");
    return parts.join(QStringLiteral(", "));
}

namespace {

bool isSame(const std::shared_ptr<PIPhoto> &one, const std::shared_ptr<PIPhoto> &other)
{
    return one == other || one->guid() == other->guid();
}

}

IndexSet rowsOfSame(const PhotoList &before, const IndexSet &rows, const PhotoList &now)
{
    if (std::equal(before.begin(), before.end(), now.begin(), now.end(), isSame))
        return rows;
    QSet<QString> guids;
    for (const auto &range : rows.ranges()) {
        for (qint64 row = range.first; row <= range.last && row < before.size(); ++row)
            guids.insert(before.at(row)->guid());
    }
    IndexSet kept;
    for (qsizetype row = 0; row < now.size() && !guids.isEmpty(); ++row) {
        if (guids.contains(now.at(row)->guid()))
            kept.add(row);
    }
    return kept;
}

int rowOfSame(const PIPhoto &photo, const PhotoList &photos)
{
    const auto found =
        std::find_if(photos.begin(), photos.end(), [&](const auto &other) { return other->guid() == photo.guid(); });
    return found == photos.end() ? -1 : int(found - photos.begin());
}
