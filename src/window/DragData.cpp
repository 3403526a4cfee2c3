#include "DragData.h"

#include "PhotoLibrary.h"
#include "PropertyList.h"

#include <QDropEvent>
#include <QMimeData>
#include <QSet>
#include <QUrl>
#include <QUuid>

namespace DragData {

namespace {

const QString kFolderDrag = QStringLiteral("hmnotes.folderDrag");
const QString kGroupDrag = QStringLiteral("hmnotes.groupDrag");
const QString kPhotoDrag = QStringLiteral("hmphoto.dragPhoto");
const QString kOptionFlag = QStringLiteral("hmphoto.optionFlag");
const QString kRun = QStringLiteral("hmphoto.run");

/// Another process with the same types means other objects by them.
const QByteArray &thisRun()
{
    static const QByteArray token = QUuid::createUuid().toRfc4122();
    return token;
}

std::unique_ptr<QMimeData> newData()
{
    auto data = std::make_unique<QMimeData>();
    data->setData(kRun, thisRun());
    return data;
}

using Identity = const PIGroup *;

QByteArray bytesOf(Identity identity)
{
    return QByteArray(reinterpret_cast<const char *>(&identity), sizeof identity);
}

/// Compares identities and never follows the one that was dragged: it may be gone.
std::shared_ptr<PIGroup> findItem(const std::shared_ptr<PIGroup> &candidate, const QByteArray &identity)
{
    if (bytesOf(candidate.get()) == identity)
        return candidate;
    for (const auto &folder : std::as_const(candidate->folders())) {
        if (auto found = findItem(folder, identity))
            return found;
    }
    return nullptr;
}

}

std::unique_ptr<QMimeData> forItem(const std::shared_ptr<PIGroup> &item)
{
    auto data = newData();
    data->setData(item->asFolder() ? kFolderDrag : kGroupDrag, bytesOf(item.get()));
    return data;
}

std::unique_ptr<QMimeData> forPhotos(const PIGroup::PhotoList &photos, Transfer transfer)
{
    auto data = newData();
    QVariantList guids;
    for (const auto &photo : photos)
        guids.append(photo->guid());
    data->setData(kPhotoDrag, PropertyList::toXml(guids).value_or(QByteArray()));
    if (transfer == Transfer::Copy)
        data->setData(kOptionFlag, QByteArray(1, '1'));
    addFiles(*data, photos);
    return data;
}

std::optional<NavigatorDrop::Kind> kind(const QDropEvent &event)
{
    using Kind = NavigatorDrop::Kind;
    const QMimeData &data = *event.mimeData();
    if (data.data(kRun) == thisRun()) {
        if (data.hasFormat(kFolderDrag))
            return Kind::Folder;
        if (data.hasFormat(kGroupDrag))
            return Kind::Group;
        if (data.hasFormat(kPhotoDrag))
            return Kind::Photos;
    }
    const bool mayCopy = event.possibleActions().testFlag(Qt::CopyAction);
    return mayCopy && !files(data).isEmpty() ? std::optional(Kind::Files) : std::nullopt;
}

std::shared_ptr<PIGroup> item(const QMimeData &data, const PhotoLibrary &library)
{
    const QByteArray identity = data.data(data.hasFormat(kFolderDrag) ? kFolderDrag : kGroupDrag);
    for (const auto &group : library.groups()) {
        if (auto found = findItem(group, identity))
            return found;
    }
    return nullptr;
}

PIGroup::PhotoList photos(const QMimeData &data, const PIFolder &folder)
{
    QSet<QString> guids;
    const auto list = PropertyList::fromData(data.data(kPhotoDrag)).value_or(QVariant()).toList();
    for (const QVariant &guid : list)
        guids.insert(guid.toString());
    PIGroup::PhotoList photos;
    for (const auto &photo : folder.photos()) {
        if (guids.contains(photo->guid()))
            photos.append(photo);
    }
    return photos;
}

Transfer transfer(const QDropEvent &event)
{
    const bool copies = event.mimeData()->hasFormat(kOptionFlag) || event.modifiers().testFlag(Qt::ControlModifier);
    return copies ? Transfer::Copy : Transfer::Move;
}

QStringList files(const QMimeData &data)
{
    QStringList paths;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    return paths;
}

void addFiles(QMimeData &data, const PIGroup::PhotoList &photos)
{
    QList<QUrl> addresses;
    for (const auto &photo : photos) {
        if (!photo->isFileLost())
            addresses.append(QUrl::fromLocalFile(photo->fileRef()->path()));
    }
    if (!addresses.isEmpty())
        data.setUrls(addresses);
}

}
