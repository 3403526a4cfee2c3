#include "FolderHistory.h"

#include "PIFolder.h"

void FolderHistory::visit(const std::shared_ptr<PIFolder> &folder)
{
    m_forward.clear();
    if (m_back.isEmpty() || m_back.last() != folder)
        m_back.append(folder);
}

std::shared_ptr<PIFolder> FolderHistory::goBack()
{
    if (!canGoBack())
        return nullptr;
    m_forward.append(m_back.takeLast());
    return m_back.last();
}

std::shared_ptr<PIFolder> FolderHistory::goForward()
{
    if (!canGoForward())
        return nullptr;
    m_back.append(m_forward.takeLast());
    return m_back.last();
}

void FolderHistory::forget(const std::shared_ptr<PIFolder> &folder)
{
    removeWithSubfolders(folder);
    for (qsizetype i = m_back.size() - 1; i > 0; --i) {
        if (m_back[i] == m_back[i - 1])
            m_back.removeAt(i);
    }
}

void FolderHistory::removeWithSubfolders(const std::shared_ptr<PIFolder> &folder)
{
    m_back.removeAll(folder);
    m_forward.clear();
    for (const auto &child : folder->folders())
        removeWithSubfolders(child);
}
