#include "LocatorCheck.h"

#include "BookmarkService.h"

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
                                 BookmarkService &bookmarks)
{
    auto locator = locators.locatorForGuid(file.guid);
    if (!locator && !locators.isStored())
        return CheckedFile{file.guid, file.path, {}, QByteArray()};
    if (!locator) {
        QString reason; // when there is no bookmark, taking the file up tells why
        return CheckedFile{file.guid, file.path, {}, bookmarks.create(file.path, reason).value_or(QByteArray())};
    }
    const auto doubt = LocatorFileFinder::doubtAbout(*locator, bookmarks);
    if (!doubt && locator->path() == file.path)
        return {};
    return CheckedFile{file.guid, locator->path(), doubt, {}};
}

}

void LocatorCheck::run(const std::stop_token &stop,
                       const std::function<void(const QList<CheckedFile> &)> &checked) const
{
    constexpr qsizetype kBatch = 500;
    const LocatorSnapshot::Reader locators(m_locators);
    QList<CheckedFile> batch;
    for (const PostponedFile &file : m_files) {
        if (stop.stop_requested())
            return;
        if (auto told = check(file, locators, *m_bookmarks))
            batch.append(*std::move(told));
        if (batch.size() >= kBatch)
            checked(std::exchange(batch, {}));
    }
    if (!batch.isEmpty())
        checked(batch);
}
