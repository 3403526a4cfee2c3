#pragma once

#include "DispatchQueue.h"
#include "MovedFilesRun.h"

#include <QObject>

#include <functional>
#include <memory>

class PIFolder;
class PIPhoto;
class PhotoLibrary;
class QWidget;

/// What the file section offers for a missing file: showing where it is, or where its whole folder is. The disk on
/// which it stood may not answer, so the main thread looks at no place.
class LostFileCommands final : public QObject
{
    Q_OBJECT

public:
    /// Tells which folder the window shows.
    using ShownFolder = std::function<std::shared_ptr<PIFolder>()>;
    using CurrentPhoto = std::function<std::shared_ptr<PIPhoto>()>;

    /// `section`, the parent, stands in the window over which questions are asked. `library` outlives it.
    LostFileCommands(PhotoLibrary &library, ShownFolder shownFolder, CurrentPhoto currentPhoto, QWidget &section);

    /// Asks where the current photo's file is. Others of the folder on show that are there too are found with it.
    void findFile();
    /// Tells `told` the highest folder above the file that is gone, in the background.
    void findMovedFolder(const QString &path, const std::function<void(const QString &folder)> &told);
    /// Asks where that folder is now, which held the current photo's file.
    void findMovedTree(const QString &folder);

Q_SIGNALS:
    /// Files were found, or were not: what is shown of them may be another.
    void done();

private:
    void askForFile(const std::shared_ptr<PIPhoto> &lost, const QString &folder);
    void takeFile(const std::shared_ptr<PIPhoto> &lost, const QString &path);
    void treeWasSought(const MovedFilesRun::Outcome &outcome);

    PhotoLibrary &m_library;
    ShownFolder m_shownFolder;
    CurrentPhoto m_currentPhoto;
    QWidget &m_section;
    int m_question = 0;     ///< counts up when one is prepared, and when it is asked
    DispatchQueue m_looks;  ///< at old places
    DispatchQueue m_worker; ///< for what is found
};
