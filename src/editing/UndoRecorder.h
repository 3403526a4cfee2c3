#pragma once

#include <memory>

class PIGroup;
class PIPhoto;

/// What part of the model a change is about to touch; the numbers are those of undo entries.
enum class UndoAction {
    Photo = 0,
    WholeTree = 1,
    FolderList = 2,
    GroupList = 3,
    PhotoList = 4,
    SingleContainer = 5,
    EffectSets = 6,
};

/// What the undo menu calls a change.
enum class UndoName {
    AddFolder = 0,
    AddGroup = 1,
    AddPhoto = 2,
    AddSearchResults = 3,
    Crop = 4,
    Cut = 5,
    DeleteFolder = 6,
    DeleteGroup = 7,
    DeletePhoto = 8,
    Mark = 9,
    MoveFolder = 10,
    MoveGroup = 11,
    MovePhoto = 12,
    Paste = 13,
    Caption = 14,
    Effects = 15,
    Keywords = 16,
    RenameFolder = 17,
    RenameGroup = 18,
    SortFolder = 19,
    EffectSets = 20,
    /// Not a name: the change is part of one that is recorded already.
    AlreadyRecorded = 21,
};

/// What a change acts on: a container (group or folder), a photo, or nothing.
struct UndoContext
{
    std::shared_ptr<PIGroup> container;
    std::shared_ptr<PIPhoto> photo;
};

/// Remembers the model as it is before a change. Every change asks first, and is not made when refused.
class UndoRecorder
{
public:
    virtual ~UndoRecorder() = default;
    [[nodiscard]] virtual bool setUndoAction(UndoAction action, UndoName descriptor, const UndoContext &context) = 0;
};
