#pragma once

#include "QVUndoManager.h"

class LibraryView;
class PhotoLibrary;

/// Takes the snapshots of the library for the undo manager and exchanges them with the live model. Groups, folders and
/// photos keep their identity: what comes back is put into the objects that were there before, so that whoever holds
/// one goes on holding the right one. Main thread.
class LibraryUndo final : public UndoDelegate
{
public:
    /// Both outlive this.
    LibraryUndo(PhotoLibrary &library, LibraryView &view)
        : m_library(library)
        , m_view(view)
    {}

    [[nodiscard]] bool setUndoAction(UndoAction action, UndoName descriptor, UndoData &data,
                                     const UndoContext &context) override;
    [[nodiscard]] bool undoOrRedo(UndoAction action, UndoName descriptor, UndoData &data,
                                  UndoDirection direction) override;
    [[nodiscard]] QString undoActionName(UndoName descriptor, const UndoData &data) const override;
    [[nodiscard]] bool coalesceUndoAction(UndoAction action, UndoName descriptor, const UndoData &data,
                                          const UndoContext &context) const override;
    void didPopUndoAction(UndoAction action, UndoName descriptor, const UndoData &data) override;

private:
    [[nodiscard]] bool makeSnapshot(UndoAction action, UndoData &data, const UndoContext &context) const;
    [[nodiscard]] bool exchangeSnapshot(UndoAction action, UndoData &data);
    [[nodiscard]] bool exchangePhoto(UndoData &data);
    [[nodiscard]] bool exchangeWholeTree(UndoData &data);
    [[nodiscard]] bool exchangeFolderList(UndoData &data);
    [[nodiscard]] bool exchangeGroupList(UndoData &data);
    [[nodiscard]] bool exchangePhotoList(UndoData &data);
    [[nodiscard]] bool exchangeSingleContainer(UndoData &data);
    [[nodiscard]] bool exchangeEffectSets(UndoData &data);
    void takeBack(PIPhoto &photo, const PIPhoto &was);
    void takePhotosBack(UndoData &data, const std::function<bool(const std::shared_ptr<PIPhoto> &)> &isMeant);
    void show(UndoAction action, const UndoData &data, UndoDirection direction);
    [[nodiscard]] std::shared_ptr<PIFolder> folderByGuid(const QString &guid) const;

    PhotoLibrary &m_library;
    LibraryView &m_view;
};
