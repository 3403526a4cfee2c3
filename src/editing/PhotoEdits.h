#pragma once

#include "EffectChain.h"
#include "IndexSet.h"
#include "LibraryEditor.h"

#include <functional>

/// Changes to the photos of the folder on show, as the grid offers them. Each is one undoable step. Main thread.
class PhotoEdits
{
public:
    explicit PhotoEdits(LibraryEditor &editor)
        : m_editor(editor)
    {}

    enum class Transfer { Copy, Move };
    /// Brings photos of the folder on show to a folder, or to the last folder of a group (made when there is none),
    /// and shows them there. Copies get guids of their own. False when refused.
    bool copyPhotos(const PIGroup::PhotoList &photos, const std::shared_ptr<PIGroup> &toItem, Transfer transfer);
    /// Makes a subfolder of the folder on show that holds the selected photos, or copies of them, and shows it. Null
    /// when refused or nothing is selected.
    std::shared_ptr<PIFolder> extractFolder(Transfer transfer);
    /// Inserts photos that no folder has yet behind the last selected one. False when refused.
    bool paste(const PIGroup::PhotoList &photos);
    /// Takes the photos out of the folder on show; their files stay. False when refused.
    bool deletePhotos(const PIGroup::PhotoList &photos);
    /// Brings the photos at these positions together, in their order, before the one that is now at `before` (the
    /// photo count: to the end). False when refused or when everything stands so already.
    bool reorderPhotos(const IndexSet &positions, qint64 before);
    /// Moves the selected photos together one place up (below 0) or down. False when they are at that end already.
    bool moveSelectedBy(int places);
    /// Marks the unmarked among the selected photos, and the other way round.
    bool toggleMark();

    /// Shows those of the selected photos whole again that are cropped, and selects them. False when none is.
    bool clearCrop();

    /// Gives the selected photos the effects of the set of that name. False when there is no such set or no photo, or
    /// when refused.
    bool applyEffectSet(const QString &name);
    /// Takes the effects off those of the selected photos that have any. False when none has.
    bool clearEffects();

    enum class Order { Name, Date, Random };
    /// Sorts the folder on show. `random` gives the next random number. False when refused.
    bool sortFolder(Order order, const std::function<quint32()> &random);

    /// The selected photos in the order of the folder.
    [[nodiscard]] PIGroup::PhotoList selectedPhotos() const;

private:
    [[nodiscard]] bool record(UndoAction action, UndoName name, const std::shared_ptr<PIGroup> &container = nullptr);
    [[nodiscard]] std::shared_ptr<PIFolder> targetIn(const std::shared_ptr<PIGroup> &item, bool isRecorded);
    void setEffects(const PIGroup::PhotoList &photos, const EffectChain &chain);
    void takeOut(const PIGroup::PhotoList &photos);

    LibraryEditor &m_editor;
};
