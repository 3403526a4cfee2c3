#pragma once

#include <QList>

#include <functional>
#include <memory>

class PIFolder;

/// The folders visited, as a browser keeps pages: back leads to earlier ones, forward to those stepped back from.
class FolderHistory
{
public:
    /// A folder was shown by the user's choice; what lay forward is forgotten.
    void addFolderToNavigator(const std::shared_ptr<PIFolder> &folder);
    /// Steps and returns the folder to show now; null when there is none.
    std::shared_ptr<PIFolder> goBack();
    std::shared_ptr<PIFolder> goForward();
    [[nodiscard]] bool canGoBack() const { return m_backFolders.size() > 1; }
    [[nodiscard]] bool canGoForward() const { return !m_forwardFolders.isEmpty(); }
    enum class TopLevel { Yes, No };
    /// A folder was deleted: it and everything beneath it leave the history. `TopLevel::No` is for those beneath.
    void deleteFolderFromNavigator(const std::shared_ptr<PIFolder> &folder, TopLevel topLevel = TopLevel::Yes);
    /// All other folders leave the history; back and forward go on among those that remain.
    void keepOnly(const std::function<bool(const std::shared_ptr<PIFolder> &)> &isKept);

private:
    QList<std::shared_ptr<PIFolder>> m_backFolders; // the last one is on show
    QList<std::shared_ptr<PIFolder>> m_forwardFolders;
};
