#include "FolderOfSizes.h"

#include "DirectoryWalk.h"
#include "NativePath.h"
#include "StoredFile.h"

FolderOfSizes::FolderOfSizes(const QByteArray &folder, const Volume &volume)
{
    DirectoryWalk walk(
        [&](const DirectoryWalk::Folder &open, std::span<const DirectoryWalk::Entry> entries) {
            for (const DirectoryWalk::Entry &entry : entries)
                if (const auto file = examineFile(open.descriptor, entry.name))
                    m_places.insert(file->identity.size, {NativePath::join(folder, entry.name), *file, &volume});
            return DirectoryWalk::Visit::Continue;
        },
        {});
    walk.readFolder(folder);
}

std::optional<FoundPlace> FolderOfSizes::placeOf(const BookmarkView &stored) const
{
    const auto [first, last] = m_places.equal_range(stored.size());
    for (auto place = first; place != last; ++place) {
        PresentFile file = place->file;
        if (isStoredFile(stored, file, kNoFolder, place->path.constData(), InodeTrust::MadeUp))
            return *place;
    }
    return {};
}
