#include "FileCheck.h"

#include "PhotoLibrary.h"

#include <utility>

namespace {

constexpr int kLooksAtOnce = 4;

}

FileCheck::FileCheck(PhotoLibrary &library, LocatorFileFinder &finder, const QString &label, Taken taken, Ended ended)
    : m_library(library)
    , m_finder(finder)
    , m_taken(std::move(taken))
    , m_ended(std::move(ended))
    , m_queue(label, kLooksAtOnce, DispatchQueue::AtEnd::LeaveBehind) // a disk may not answer
{}

FileCheck::~FileCheck()
{
    m_stop.request_stop();
}

int FileCheck::run(const LocatorCheck &check)
{
    const int look = ++m_lastLook;
    m_queue.async([toHere = m_link.toHere(), look, check, stop = m_stop.get_token()] {
        check.run(stop,
                  [&](const QList<CheckedFile> &files) { toHere([files](FileCheck &here) { here.take(files); }); });
        toHere([look, unused = check.unusedGuids()](FileCheck &here) {
            here.m_finder.forget(unused);
            here.m_ended(look);
        });
    });
    return look;
}

void FileCheck::take(const QList<CheckedFile> &files)
{
    Files changed;
    Files doubtful;
    for (const CheckedFile &file : files) {
        const auto ref = m_library.fileRefs().fileRefForGuid(file.guid);
        if (!ref)
            continue;
        const FoundFile place = m_finder.takeChecked(file);
        if (place.path != ref->path() || place.found == ref->isFileLost() || place.volumeAway != ref->isVolumeAway())
            changed.insert(ref.get());
        if (file.doubt)
            doubtful.insert(ref.get());
        ref->take(place);
    }
    m_taken(changed, doubtful);
}
