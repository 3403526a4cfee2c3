#pragma once

#include "ImageScan.h"
#include "KeywordVocabulary.h"
#include "LibraryEditor.h"
#include "PictureWords.h"

#include <QObject>
#include <QStringList>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

class DispatchQueue;

/// Brings files and folders into the library as one undoable step: a worker walks the disk, and the main thread takes
/// what it finds in small slices, so that the window stays alive. The library's tree gets it all in one turn at the
/// end, at the place that was chosen at the start. Cancelling keeps what was taken until then.
class PhotoImport
{
public:
    struct Request
    {
        QStringList paths;
        /// Folders become subfolders of it and loose files join it; null: chosen as LibraryEditor tells.
        std::shared_ptr<PIFolder> toFolder;
        quint64 atIndex = kNotFound; ///< loose files go behind this position
        UndoName undoName = UndoName::AddPhoto;
        /// Asked in the end for the folder that takes loose files, if any came; what it gives goes before `toFolder`,
        /// and without a folder they are not added.
        std::function<std::shared_ptr<PIFolder>()> makeFolder = {};
        /// Asked on the worker for the caption and keywords that a file brings along; without it none are taken over.
        std::function<PictureWords(const QString &path)> readWords = {};
    };

    struct Outcome
    {
        bool accepted = true; ///< false when a recording was refused; nothing was added then
        int photosAdded = 0;
        /// Made for the first folder that was brought in; null when none was.
        std::shared_ptr<PIFolder> firstFolder;
        ScanSummary scan;
    };

    using Progress = std::function<void(int photosAdded)>;
    using Finished = std::function<void(const Outcome &)>;

    /// `editor` outlives the import. `workers` runs the walk.
    PhotoImport(LibraryEditor &editor, DispatchQueue &workers, Request request);
    ~PhotoImport();
    PhotoImport(const PhotoImport &) = delete;
    PhotoImport &operator=(const PhotoImport &) = delete;

    /// Returns at once. `finished` is called once, on the main thread, and may destroy the import.
    void start(Progress progress, Finished finished);
    /// The walk ends soon; `finished` still comes.
    void cancel();

private:
    struct Channel;

    void notePlace();
    void takeSlice();
    void reportProgress();
    void take(const ScanStep &step, const PictureWords &words);
    void takeWords(PIPhoto &photo, const PictureWords &words);
    void beginFolder(const QString &path);
    void finish();
    void joinVocabulary();
    [[nodiscard]] bool recordMixture();
    [[nodiscard]] bool addFolders();
    [[nodiscard]] bool addFolder(const std::shared_ptr<PIFolder> &folder);
    [[nodiscard]] bool addLoosePhotos();

    LibraryEditor &m_editor;
    DispatchQueue &m_workers;
    Request m_request;
    Progress m_progress;
    Finished m_finished;
    std::shared_ptr<Channel> m_channel;                   ///< what the walk has found and nobody has taken yet
    std::shared_ptr<PIGroup> m_selectedBefore;            ///< in the navigator, when the import started
    std::shared_ptr<PIGroup> m_parent;                    ///< of the new folders; null: made for them
    std::vector<std::shared_ptr<PIFolder>> m_openFolders; ///< the library folders of the walk's present place
    QList<std::shared_ptr<PIFolder>> m_newFolders;        ///< not yet in the library's tree
    PIGroup::PhotoList m_loosePhotos;
    KeywordVocabulary m_keywords;            ///< of the photos that are not yet in the library's tree ...
    PIGroup::PhotoList m_photosWithKeywords; ///< ... as far as they have any
    int m_photosTaken = 0;
    int m_photosReported = 0;
    Outcome m_outcome;
};
