#include "QVUndoManager.h"

#include <QCoreApplication>

void QVUndoManager::setDelegate(UndoDelegate *delegate)
{
    clearUndo();
    m_delegate = delegate;
}

bool QVUndoManager::setUndoAction(UndoAction action, UndoName descriptor, const UndoContext &context)
{
    if (!m_delegate || m_isExchanging)
        return false;
    const bool joins = joinsNewest(action, descriptor, context);
    killRedo();
    m_undoSet = false;
    if (!joins && !addEntry(action, descriptor, context)) {
        clearUndo();
        return false;
    }
    m_undoSet = true;
    m_okToGroup = true;
    changed();
    return true;
}

bool QVUndoManager::joinsNewest(UndoAction action, UndoName descriptor, const UndoContext &context) const
{
    if (!isUndoAvailable() || !m_okToGroup)
        return false;
    const Entry &newest = m_entries[static_cast<size_t>(m_currentEntry)];
    return newest.action == action && newest.descriptor == descriptor &&
           m_delegate->coalesceUndoAction(action, descriptor, newest.data, context);
}

/// The oldest entry makes room in a full ring.
bool QVUndoManager::addEntry(UndoAction action, UndoName descriptor, const UndoContext &context)
{
    Entry entry{action, descriptor, {}};
    if (!m_delegate->setUndoAction(action, descriptor, entry.data, context))
        return false;
    if (count() == m_capacity)
        m_entries.pop_front();
    m_entries.push_back(std::move(entry));
    m_currentEntry = count() - 1;
    return true;
}

void QVUndoManager::popUndo()
{
    if (!m_undoSet)
        return;
    m_undoSet = false;
    const Entry withdrawn = std::move(m_entries[static_cast<size_t>(m_currentEntry)]);
    m_entries.erase(m_entries.begin() + m_currentEntry);
    --m_currentEntry;
    m_delegate->didPopUndoAction(withdrawn.action, withdrawn.descriptor, withdrawn.data);
    changed();
}

void QVUndoManager::clearUndo()
{
    m_entries.clear();
    m_currentEntry = -1;
    m_undoSet = false;
    changed();
}

void QVUndoManager::killRedo()
{
    m_entries.erase(m_entries.begin() + (m_currentEntry + 1), m_entries.end()); // never a place before the first
}

void QVUndoManager::undo()
{
    if (m_isExchanging)
        return;
    if (isUndoAvailable())
        exchange(m_currentEntry--, UndoDirection::Undo);
    else if (m_beep)
        m_beep();
}

void QVUndoManager::redo()
{
    if (m_isExchanging)
        return;
    if (isRedoAvailable())
        exchange(++m_currentEntry, UndoDirection::Redo);
    else if (m_beep)
        m_beep();
}

void QVUndoManager::exchange(int entry, UndoDirection direction)
{
    m_okToGroup = false;
    m_undoSet = false;
    m_isExchanging = true;
    Entry &exchanged = m_entries[static_cast<size_t>(entry)];
    const bool done = m_delegate->undoOrRedo(exchanged.action, exchanged.descriptor, exchanged.data, direction);
    m_isExchanging = false;
    if (!done)
        clearUndo();
    changed();
}

void QVUndoManager::changed() const
{
    if (m_changed)
        m_changed();
}

QVUndoManager::MenuState QVUndoManager::validateState(UndoDirection direction) const
{
    const auto text = [](const char *source) { return QCoreApplication::translate("QVUndoManager", source); };
    const bool isUndo = direction == UndoDirection::Undo;
    if (isUndo ? !isUndoAvailable() : !isRedoAvailable())
        return {isUndo ? text("Undo") : text("Redo"), false};
    const Entry &entry = m_entries[static_cast<size_t>(isUndo ? m_currentEntry : m_currentEntry + 1)];
    const QString name = m_delegate->undoActionName(entry.descriptor, entry.data);
    return {(isUndo ? text("Undo %1") : text("Redo %1")).arg(name), true};
}

UndoData *QVUndoManager::dataForCurrentUndoAction()
{
    return m_undoSet ? &m_entries[static_cast<size_t>(m_currentEntry)].data : nullptr;
}

UndoData *QVUndoManager::dataForPreviousUndoAction()
{
    return m_undoSet && m_currentEntry > 0 ? &m_entries[static_cast<size_t>(m_currentEntry - 1)].data : nullptr;
}

void QVUndoManager::updateCurrentAction(UndoAction action)
{
    if (m_undoSet)
        m_entries[static_cast<size_t>(m_currentEntry)].action = action;
}

void QVUndoManager::updateCurrentDescriptor(UndoName descriptor)
{
    if (!m_undoSet)
        return;
    m_entries[static_cast<size_t>(m_currentEntry)].descriptor = descriptor;
    changed();
}

bool QVUndoManager::setNewUndoAction(UndoAction action, UndoName descriptor)
{
    return setUndoID(newUndoID(), action, descriptor);
}

bool QVUndoManager::setUndoID(UndoID id, UndoAction action, UndoName descriptor, const UndoContext &context)
{
    if (isUndoIDActive(id))
        return true;
    m_currentUndoID = id == kNewUndoID ? newUndoID() : id;
    return setUndoAction(action, descriptor, context);
}
