#include "LocatorCheck.h"

#include "BookmarkService.h"
#include "NativePath.h"
#include "PosixSupport.h"
#include "Volumes.h"

#include <array>
#include <utility>

LocatorCheck::LocatorCheck(QList<PostponedFile> files, QStringList guidsInUse, LocatorSnapshot locators,
                           BookmarkService &bookmarks)
    : m_files(std::move(files))
    , m_guidsInUse(std::move(guidsInUse))
    , m_locators(std::move(locators))
    , m_bookmarks(&bookmarks)
{}

QStringList LocatorCheck::unusedGuids() const
{
    return m_guidsInUse.isEmpty() ? QStringList() : m_locators.guidsBut(m_guidsInUse);
}

namespace {

/// Nothing when the file is as its reference has it.
std::optional<CheckedFile> check(const PostponedFile &file, const LocatorSnapshot::Reader &locators,
                                 BookmarkService &bookmarks, const Volumes &volumes)
{
    auto locator = locators.locatorForGuid(file.guid);
    if (!locator && !locators.isStored())
        return CheckedFile{file.guid, file.path, {}, QByteArray()};
    if (!locator) {
        QString reason; // when there is no bookmark, taking the file up tells why
        return CheckedFile{file.guid, file.path, {}, bookmarks.create(file.path, reason).value_or(QByteArray())};
    }
    const auto doubt = LocatorFileFinder::doubtAbout(*locator, bookmarks, &volumes);
    if (!doubt && locator->path() == file.path && !file.isDoubtful)
        return {};
    return CheckedFile{file.guid, locator->path(), doubt, {}};
}

/// The files in two parts: those of disks, and those of which a look may take forever, so that nobody waits for them.
std::array<QList<const PostponedFile *>, 2> remoteLast(const QList<PostponedFile> &files, const Volumes &volumes)
{
    std::array<QList<const PostponedFile *>, 2> parts;
    QByteArray folder; // neighbours in a library often share it
    bool isRemote = false;
    for (const PostponedFile &file : files) {
        QByteArray path = Posix::nativePath(file.path);
        if (QByteArrayView parent = NativePath::parentView(path); parent != folder) {
            folder = parent.toByteArray();
            isRemote = volumes.isRemote(path);
        }
        parts.at(isRemote ? 1 : 0).append(&file);
    }
    return parts;
}

}

void LocatorCheck::run(const std::stop_token &stop,
                       const std::function<void(const QList<CheckedFile> &)> &checked) const
{
    constexpr qsizetype kBatch = 200; // files looked at
    using Reader = LocatorSnapshot::Reader;
    const Reader locators(m_locators, m_files.size() > kBatch ? Reader::Reads::Many : Reader::Reads::Few);
    const auto volumes = Volumes::current();
    for (const auto &files : remoteLast(m_files, *volumes)) {
        QList<CheckedFile> batch;
        for (qsizetype index = 0; index < files.size(); ++index) {
            if (stop.stop_requested())
                return;
            if (auto told = check(*files[index], locators, *m_bookmarks, *volumes))
                batch.append(*std::move(told));
            if ((index + 1) % kBatch == 0)
                checked(std::exchange(batch, {}));
        }
        if (!batch.isEmpty())
            checked(batch);
    }
}
