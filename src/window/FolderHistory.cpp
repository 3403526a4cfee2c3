#include "FolderHistory.h"

#include "PIFolder.h"

void FolderHistory::addFolderToNavigator(const std::shared_ptr<PIFolder> &folder)
{
    m_forwardFolders.clear();
    if (m_backFolders.isEmpty() || m_backFolders.last() != folder)
        m_backFolders.append(folder);
}

std::shared_ptr<PIFolder> FolderHistory::goBack()
{
    if (!canGoBack())
        return nullptr;
    m_forwardFolders.append(m_backFolders.takeLast());
    return m_backFolders.last();
}

std::shared_ptr<PIFolder> FolderHistory::goForward()
{
    if (!canGoForward())
        return nullptr;
    m_backFolders.append(m_forwardFolders.takeLast());
    return m_backFolders.last();
}

void FolderHistory::deleteFolderFromNavigator(const std::shared_ptr<PIFolder> &folder, TopLevel topLevel)
{
    m_backFolders.removeAll(folder);
    m_forwardFolders.clear();
    for (const auto &child : folder->folders())
        deleteFolderFromNavigator(child, TopLevel::No);
    if (topLevel == TopLevel::No)
        return;
    for (qsizetype i = m_backFolders.size() - 1; i > 0; --i) {
        if (m_backFolders[i] == m_backFolders[i - 1])
            m_backFolders.removeAt(i);
    }
}
