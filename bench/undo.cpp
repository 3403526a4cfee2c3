// Undo in a library of 100,000 photos: recording a change, the change itself, and taking it back.

#include "LibraryFile.h"
#include "LibraryWindow.h"
#include "PIFolder.h"
#include "PIWindowController.h"
#include "Pair.h"
#include "PhotoLibrary.h"
#include "SampleLibrary.h"
#include "TreeEdits.h"
#include "TrustingFinder.h"
#include "UserDefaults.h"

#include <QApplication>
#include <QFile>

#include <memory>
#include <utility>

namespace {

constexpr int kPhotos = 100'000;

/// The library in its window.
struct Desk
{
    TrustingFinder finder;
    NotificationCenter notifications;
    PhotoLibrary library;
    UserDefaults defaults;
    std::unique_ptr<PIWindowController> window;

    explicit Desk(const QString &folder)
        : library(folder, finder, notifications)
        , defaults(folder + QStringLiteral("/defaults.plist"))
    {}

    bool open(const QString &path)
    {
        LibraryFile::registerTags();
        if (LibraryFile::load(path, library).photoGuids.size() != kPhotos)
            return false;
        const auto all = std::make_shared<PIFolder>(QStringLiteral("All"));
        library.forEachPhoto([&](const std::shared_ptr<PIPhoto> &photo) { all->photos().append(photo->copy()); });
        everything = all;
        window = std::make_unique<PIWindowController>(library, defaults, path);
        window->showWindow(/*zoomed=*/false);
        window->resetList(library.groups().first()->folders().first());
        showAll();
        return true;
    }
    void showAll() const
    {
        window->window().repaint();
        QCoreApplication::processEvents();
    }
    bool record(UndoAction action, const std::shared_ptr<PIGroup> &container = {}) const
    {
        return window->undoManager().setUndoAction(action, UndoName::SortFolder, {.container = container, .photo = {}});
    }

    std::shared_ptr<PIFolder> everything; ///< one folder with as many photos, not yet in the library
};

std::shared_ptr<PIFolder> copyOf(const PIFolder &folder)
{
    const auto copy = std::static_pointer_cast<PIFolder>(folder.copy());
    for (auto &photo : copy->photos())
        photo = photo->copy();
    for (auto &child : copy->folders()) {
        child = copyOf(*child);
        child->setParent(copy);
    }
    return copy;
}

QList<std::shared_ptr<PIGroup>> copyOf(const PhotoLibrary &library)
{
    QList<std::shared_ptr<PIGroup>> groups;
    for (const auto &group : library.groups()) {
        groups << group->copy();
        for (auto &folder : groups.last()->folders())
            folder = copyOf(*folder);
    }
    return groups;
}

void measureTree(PairRunner &runner, Desk &desk)
{
    QVUndoManager &manager = desk.window->undoManager();
    QList<std::shared_ptr<PIGroup>> copy;
    runner.run({.name = "record-tree",
                .ours =
                    [&] {
                        if (!desk.record(UndoAction::WholeTree))
                            runner.fail("the tree was not recorded");
                    },
                .peerName = "copying groups, folders and photos",
                .peer = [&] { copy = copyOf(desk.library); },
                .prepare =
                    [&] {
                        manager.clearUndo();
                        copy.clear();
                    }});
    manager.clearUndo();
    TreeEdits edits(desk.window->editor());
    const auto &groups = desk.library.groups();
    if (!edits.moveFolder(groups.first()->folders().first(), groups.last(), -1))
        return runner.fail("the folder was not moved");
    desk.showAll();
    runner.run({.name = "undo-tree-and-show", .ours = [&] {
                    manager.isUndoAvailable() ? manager.undo() : manager.redo();
                    desk.showAll();
                }});
    manager.clearUndo();
}

void measurePhotos(PairRunner &runner, Desk &desk)
{
    QVUndoManager &manager = desk.window->undoManager();
    const auto &folder = desk.everything;
    folder->setParent(desk.library.groups().first());
    desk.library.groups().first()->folders().append(folder);
    desk.window->resetList(folder);
    desk.showAll();

    PIGroup::PhotoList copy;
    const auto clear = [&] {
        manager.clearUndo();
        copy.clear();
    };
    runner.run({.name = "record-photos",
                .ours =
                    [&] {
                        if (!desk.record(UndoAction::PhotoList, folder))
                            runner.fail("the photos were not recorded");
                    },
                .peerName = "copying photos",
                .peer = [&] { copy = copyOf(*folder)->photos(); },
                .prepare = clear});
    const auto mark = [&] {
        for (const auto &photo : std::as_const(*folder).photos())
            photo->setMarked(!photo->isMarked());
    };
    runner.run({.name = "record-and-mark-all",
                .ours =
                    [&] {
                        if (desk.record(UndoAction::PhotoList, folder))
                            mark();
                    },
                .peerName = "copying photos first",
                .peer =
                    [&] {
                        copy = copyOf(*folder)->photos();
                        mark();
                    },
                .prepare = clear});
    clear();
    if (!desk.record(UndoAction::PhotoList, folder))
        return runner.fail("the photos were not recorded");
    mark();
    runner.run({.name = "undo-marks-of-all-and-show", .ours = [&] {
                    manager.isUndoAvailable() ? manager.undo() : manager.redo();
                    desk.showAll();
                }});
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    QApplication application(argc, argv);
    const QString path = runner.folder() + QStringLiteral("/Photo.xml");
    QFile file(path);
    if (!file.open(QFile::WriteOnly) || file.write(sampleLibraryText(makeSampleLibrary())) <= 0)
        return 1;
    file.close();
    Desk desk(runner.folder());
    if (!desk.open(path)) {
        runner.fail("the library was not read");
        return runner.result();
    }
    measureTree(runner, desk);
    measurePhotos(runner, desk);
    desk.window.reset();
    return runner.result();
}
