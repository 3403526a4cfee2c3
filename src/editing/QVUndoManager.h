#pragma once

#include "UndoData.h"
#include "UndoRecorder.h"

#include <QString>

#include <deque>
#include <functional>
#include <optional>

enum class UndoDirection { Undo, Redo };

/// Makes the snapshots that an undo manager keeps, and puts them back.
class UndoDelegate
{
public:
    virtual ~UndoDelegate() = default;

    /// Fills `data` with the part of the model that is about to change; false when it cannot.
    [[nodiscard]] virtual bool setUndoAction(UndoAction action, UndoName descriptor, UndoData &data,
                                             const UndoContext &context) = 0;
    /// Exchanges the live part of the model with the snapshot; false when that part is no longer there.
    [[nodiscard]] virtual bool undoOrRedo(UndoAction action, UndoName descriptor, UndoData &data,
                                          UndoDirection direction) = 0;
    [[nodiscard]] virtual QString undoActionName(UndoName descriptor, const UndoData &data) const = 0;
    /// Whether the change belongs to the step that `data` was recorded for, which has the same action and descriptor.
    [[nodiscard]] virtual bool coalesceUndoAction(UndoAction action, UndoName descriptor, const UndoData &data,
                                                  const UndoContext &context) const = 0;
    /// The entry was withdrawn: the change that it was made for is not made.
    virtual void didPopUndoAction(UndoAction action, UndoName descriptor, const UndoData &data) = 0;
};

/// The history of changes: a ring of snapshots, taken before each change. Undo and redo both exchange a snapshot with
/// the live model, so that the same entry leads either way. Main thread.
class QVUndoManager final : public UndoRecorder
{
public:
    static constexpr int kUsualCapacity = 25;

    QVUndoManager() = default;
    QVUndoManager(const QVUndoManager &) = delete;
    QVUndoManager &operator=(const QVUndoManager &) = delete;

    /// Without a delegate every recording is refused, so that no command changes the model. Another one ends the
    /// history.
    void setDelegate(UndoDelegate *delegate);
    /// The number of entries; 0 for the usual one. To be set before the first recording.
    void setCapacity(int capacity) { m_capacity = capacity > 0 ? capacity : kUsualCapacity; }
    /// Called when there is nothing to undo or redo.
    void setBeep(std::function<void()> beep) { m_beep = std::move(beep); }
    /// Called whenever what can be undone or redone may be another.
    void setChangeListener(std::function<void()> listener) { m_changed = std::move(listener); }

    /// Records an entry, or lets the change join the newest one. A command that gets false must not change the model.
    [[nodiscard]] bool setUndoAction(UndoAction action, UndoName descriptor, const UndoContext &context) override;
    /// The next recording opens a new entry.
    void suppressCoalescing() { m_okToGroup = false; }
    /// Withdraws the entry just recorded.
    void popUndo();
    void clearUndo();
    void killRedo();
    void undo();
    void redo();

    [[nodiscard]] bool isUndoAvailable() const { return m_currentEntry >= 0; }
    [[nodiscard]] bool isRedoAvailable() const { return m_currentEntry + 1 < count(); }
    /// What the menu item says and whether it is enabled.
    struct MenuState
    {
        QString title;
        bool enabled = false;
    };
    [[nodiscard]] MenuState validateState(UndoDirection direction) const;

    struct Entry
    {
        UndoAction action;
        UndoName descriptor;
        UndoData data;
    };
    /// The entry that was just recorded, for the caller to add to; null after an undo, a redo or a withdrawal.
    [[nodiscard]] UndoData *dataForCurrentUndoAction();
    /// The entry below it; null when there is none.
    [[nodiscard]] UndoData *dataForPreviousUndoAction();
    /// Overwrite what was just recorded.
    void updateCurrentAction(UndoAction action);
    void updateCurrentDescriptor(UndoName descriptor);
    /// First what can be undone, the oldest in front, then what can be redone.
    [[nodiscard]] const std::deque<Entry> &entries() const { return m_entries; }

    // For callers that record once for a run of related changes.
    using UndoID = quint32;
    static constexpr UndoID kNewUndoID = ~UndoID(0);
    [[nodiscard]] UndoID newUndoID() { return m_nextUndoID++; }
    [[nodiscard]] bool isUndoIDActive(UndoID id) const { return id == m_currentUndoID; }
    [[nodiscard]] bool setNewUndoAction(UndoAction action, UndoName descriptor);
    /// True at once, with nothing recorded, when the identifier is the current one.
    [[nodiscard]] bool setUndoID(UndoID id, UndoAction action, UndoName descriptor, const UndoContext &context = {});

private:
    [[nodiscard]] int count() const { return static_cast<int>(m_entries.size()); }
    [[nodiscard]] bool joinsNewest(UndoAction action, UndoName descriptor, const UndoContext &context) const;
    [[nodiscard]] bool addEntry(UndoAction action, UndoName descriptor, const UndoContext &context);
    void exchange(int entry, UndoDirection direction);
    void changed() const;

    UndoDelegate *m_delegate = nullptr;
    std::function<void()> m_beep;
    std::function<void()> m_changed;
    std::deque<Entry> m_entries; ///< those in use
    int m_capacity = kUsualCapacity;
    int m_currentEntry = -1; ///< the newest that can be undone
    bool m_undoSet = false;  ///< from a recording until the next undo, redo or withdrawal
    bool m_okToGroup = false;
    bool m_isExchanging = false; ///< what a view commits while it shows the outcome is not recorded, and so not made
    UndoID m_currentUndoID = kNewUndoID - 1;
    UndoID m_nextUndoID = 1;
};
