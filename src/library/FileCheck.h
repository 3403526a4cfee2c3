#pragma once

#include "DispatchQueue.h"
#include "LocatorCheck.h"
#include "MainThreadLink.h"

#include <QSet>

#include <functional>
#include <stop_token>

class PIFileRef;
class PhotoLibrary;

/// Takes looks at files on a worker, and lets the library's references take up what they tell, some at a time: what is
/// missing is shown as lost, and noted for a search. Main thread.
class FileCheck
{
public:
    using Files = QSet<const PIFileRef *>;
    /// Called again and again while looks are under way: with the references that were shown in another state or at
    /// another place before, and those about which there is a doubt.
    using Taken = std::function<void(const Files &changed, const Files &doubtful)>;
    /// Called when a look was taken to its end, with the number that run() told.
    using Ended = std::function<void(int look)>;

    /// `library` and `finder` outlive this.
    FileCheck(PhotoLibrary &library, LocatorFileFinder &finder, const QString &label, Taken taken, Ended ended);
    ~FileCheck();
    FileCheck(const FileCheck &) = delete;
    FileCheck &operator=(const FileCheck &) = delete;

    /// A disk that does not answer holds up its own look, but not some later ones.
    int run(const LocatorCheck &check);

private:
    void take(const QList<CheckedFile> &files);

    PhotoLibrary &m_library;
    LocatorFileFinder &m_finder;
    const Taken m_taken;
    const Ended m_ended;
    std::stop_source m_stop;
    int m_lastLook = 0;
    MainThreadLink<FileCheck> m_link{*this};
    DispatchQueue m_queue;
};
