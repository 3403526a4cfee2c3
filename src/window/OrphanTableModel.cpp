#include "OrphanTableModel.h"

#include "Image.h"
#include "OrphanList.h"

#include <QGuiApplication>
#include <QPainter>

namespace {

constexpr QSize kPictureSize(56, 42);
constexpr QSize kReadSize = 2 * kPictureSize; ///< sharp on any screen

/// The picture that the file carries if there is one, else the file's own, decoded no larger than it is shown.
QImage readSmall(const QString &path)
{
    const Image image = Image::fromFile(path);
    if (image.isNull())
        return {};
    const QImage embedded = image.embeddedThumbnail();
    if (embedded.isNull())
        return image.pixels(CenterRectangle(image.size(), kReadSize)).value_or(QImage());
    return embedded.scaled(kReadSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

}

OrphanTableModel::OrphanTableModel(OrphanList &list, QObject *parent)
    : QAbstractTableModel(parent)
    , m_list(list)
    , m_pictures([this](const QString &row) { pictureReady(row.toInt()); }, readSmall)
{}

int OrphanTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_list.count());
}

int OrphanTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString OrphanTableModel::text(const QModelIndex &index) const
{
    switch (index.column()) {
    case Name:
        return m_list.fileName(index.row());
    case Path:
        return m_list.subfolder(index.row());
    case Missing:
        if (!m_list.isOfPhoto(index.row()))
            return {};
        if (m_list.isOfPhotoAway(index.row()))
            return m_list.isReattached(index.row()) ? tr("Photo not mounted: re-attach") : tr("Photo not mounted");
        return m_list.isReattached(index.row()) ? tr("Missing photo: re-attach") : tr("Missing photo: add as new");
    default:
        return {};
    }
}

/// In the middle of a box that is the same for all, empty while nothing is known.
QPixmap OrphanTableModel::picture(int row) const
{
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap box(kPictureSize * ratio);
    box.setDevicePixelRatio(ratio);
    box.fill(Qt::transparent);
    const QImage image = m_pictures.find(QString::number(row));
    if (image.isNull())
        return box;
    QRectF place(QPointF(), QSizeF(CenterRectangle(image.size(), kPictureSize)));
    place.moveCenter(QRectF(QPointF(), kPictureSize).center());
    QPainter painter(&box);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place, image);
    return box;
}

void OrphanTableModel::setVisibleRows(int first, int last)
{
    std::vector<EmbeddedThumbnails::File> files;
    for (int row = first; row <= last; ++row)
        files.push_back({QString::number(row), m_list.path(row)});
    m_pictures.want(std::move(files));
}

void OrphanTableModel::pictureReady(int row)
{
    Q_EMIT dataChanged(index(row, Name), index(row, Name), {Qt::DecorationRole});
}

QVariant OrphanTableModel::data(const QModelIndex &index, int role) const
{
    if (role == Qt::DecorationRole && index.column() == Name)
        return picture(index.row());
    if (role == Qt::CheckStateRole && index.column() == Add)
        return m_list.add(index.row()) ? Qt::Checked : Qt::Unchecked;
    if (role == Qt::DisplayRole)
        return text(index);
    if (role == Qt::ToolTipRole)
        return index.column() == Missing ? m_list.photoText(index.row()) : text(index);
    if (role == Qt::AccessibleTextRole && index.column() == Add)
        return tr("Add %1").arg(m_list.fileName(index.row()));
    return {};
}

QVariant OrphanTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    const QString titles[ColumnCount] = {tr("Add"), tr("Name"), tr("Folder"), tr("In the Library")};
    return titles[section];
}

Qt::ItemFlags OrphanTableModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    return index.column() == Add ? flags | Qt::ItemIsUserCheckable : flags;
}

bool OrphanTableModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != Add)
        return false;
    const bool add = value.toInt() == Qt::Checked;
    if (QGuiApplication::keyboardModifiers().testFlag(Qt::AltModifier)) {
        setAllAdd(add);
    } else {
        m_list.setAdd(index.row(), add);
        Q_EMIT dataChanged(index, index);
    }
    return true;
}

void OrphanTableModel::setAllAdd(bool add)
{
    m_list.setAllAdd(add);
    Q_EMIT dataChanged(index(0, Add), index(rowCount() - 1, Add));
}

void OrphanTableModel::setReattached(int row, bool reattached)
{
    m_list.setReattached(row, reattached);
    Q_EMIT dataChanged(index(row, Missing), index(row, Missing));
}
