#include "FolderHistory.h"

#include "PIFolder.h"

#include <algorithm>

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

namespace {

void mergeNeighbours(QList<std::shared_ptr<PIFolder>> &folders)
{
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
}

}

void FolderHistory::deleteFolderFromNavigator(const std::shared_ptr<PIFolder> &folder, TopLevel topLevel)
{
    m_backFolders.removeAll(folder);
    m_forwardFolders.clear();
    for (const auto &child : folder->folders())
        deleteFolderFromNavigator(child, TopLevel::No);
    if (topLevel == TopLevel::No)
        return;
    mergeNeighbours(m_backFolders);
}

void FolderHistory::keepOnly(const std::function<bool(const std::shared_ptr<PIFolder> &)> &isKept)
{
    for (auto *folders : {&m_backFolders, &m_forwardFolders}) {
        const auto removed = folders->removeIf([&](const auto &folder) { return !isKept(folder); });
        if (removed > 0)
            mergeNeighbours(*folders);
    }
}
