#include "PIFolder.h"

#include "LibraryTags.h"
#include "NumberList.h"
#include "PIPhoto.h"
#include "QVXmlDecoder.h"
#include "QVXmlEncoder.h"

#include <algorithm>

PIFolder::PIFolder(const QString &name)
    : PIGroup(name)
{}

std::shared_ptr<PIGroup> PIFolder::copy() const
{
    return std::shared_ptr<PIGroup>(new PIFolder(*this));
}

int PIFolder::photoCount(Subfolders includeSubfolders) const
{
    auto count = static_cast<int>(m_photos.size());
    if (includeSubfolders == Subfolders::Exclude && !isClosed())
        return count;
    for (const auto &folder : folders())
        count += folder->photoCount(Subfolders::Include);
    return count;
}

std::shared_ptr<PIPhoto> PIFolder::findPhotoByGuid(const QString &guid) const
{
    const auto found =
        std::find_if(m_photos.cbegin(), m_photos.cend(), [&](const auto &photo) { return photo->guid() == guid; });
    return found == m_photos.cend() ? nullptr : *found;
}

void PIFolder::removePhotosForFileRefs(const QSet<const PIFileRef *> &fileRefs)
{
    m_photos.removeIf([&](const auto &photo) { return fileRefs.contains(photo->fileRef().get()); });
    for (const auto &folder : std::as_const(folders()))
        folder->removePhotosForFileRefs(fileRefs);
}

void PIFolder::enforceVisibility()
{
    PIGroup::enforceVisibility();
    if (const auto above = parent())
        above->enforceVisibility();
}

void PIFolder::clearSaveIndexes()
{
    PIGroup::clearSaveIndexes();
    for (const auto &photo : std::as_const(m_photos))
        photo->clearSaveIndex();
}

void PIFolder::archiveToXml(QVXmlEncoder &encoder) const
{
    archiveIdentity(encoder);
    encoder.openTag("folder");
    if (isClosed())
        encoder.addTag("hide", 1);
    if (!m_photos.isEmpty()) {
        QString numbers;
        for (const auto &photo : m_photos)
            NumberList::append(numbers, photo->saveIndex());
        encoder.addTag("photos", numbers);
    }
    if (!m_selection.isEmpty() && m_selection != IndexSet::single(0))
        encoder.addTag("selection", m_selection.archive());
    archiveFolders(encoder);
    encoder.closeTag("folder");
}

bool PIFolder::handleUnknownGroupKey(const QVXmlDecoder &decoder, const PhotoList &photos)
{
    if (decoder.key() == LibraryTag::Selection) {
        m_selection = IndexSet::fromArchive(decoder.value());
        return true;
    }
    if (decoder.key() != LibraryTag::Photos)
        return true;
    const QString positions = decoder.value();
    m_photos.reserve(m_photos.size() + positions.count(u' ') + 1);
    return NumberList::forEach(positions, [&](qint64 position) {
        if (position < 0 || position >= photos.size())
            return false;
        m_photos.append(photos.at(position));
        return true;
    });
}
