#include "TrashFolders.h"

#include "NativePath.h"
#include "PosixSupport.h"
#include "StandardFolders.h"

#include <QFileInfo>

#include <algorithm>

namespace {

bool isNumber(QByteArrayView text)
{
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), [](char c) { return c >= '0' && c <= '9'; });
}

/// "/.Trash-1000" and "/.Trash/1000" are those of one user on a volume.
bool isInTrashOfVolume(const QByteArray &path)
{
    constexpr QByteArrayView kTrash("/.Trash");
    for (qsizetype at = path.indexOf(kTrash); at >= 0; at = path.indexOf(kTrash, at + 1)) {
        const QByteArrayView rest = QByteArrayView(path).sliced(at + kTrash.size());
        const qsizetype end = rest.indexOf('/', 1);
        if ((rest.startsWith('-') || rest.startsWith('/')) &&
            isNumber(rest.first(end < 0 ? rest.size() : end).sliced(1)))
            return true;
    }
    return false;
}

}

TrashFolders::TrashFolders()
{
    const auto files = standardFolderPath(StandardFolder::Trash);
    if (!files)
        return;
    const QString own = QFileInfo(*files).path(); // with the notes of where the files came from
    m_own = Posix::nativePath(own);
    m_ownWithoutLinks = Posix::nativePath(QFileInfo(own).canonicalFilePath());
}

bool TrashFolders::hold(const QByteArray &path) const
{
    const auto isWithin = [&](const QByteArray &trash) {
        return !trash.isEmpty() && NativePath::isWithin(path, trash);
    };
    return isWithin(m_own) || isWithin(m_ownWithoutLinks) || isInTrashOfVolume(path);
}
