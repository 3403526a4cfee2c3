#pragma once

#include <QList>

#include <memory>

class PIFolder;

/// The folders visited, as a browser keeps pages: back leads to earlier ones, forward to those stepped back from.
class FolderHistory
{
public:
    /// A folder was shown by the user's choice; what lay forward is forgotten.
    void visit(const std::shared_ptr<PIFolder> &folder);
    /// Steps and returns the folder to show now; null when there is none.
    std::shared_ptr<PIFolder> goBack();
    std::shared_ptr<PIFolder> goForward();
    [[nodiscard]] bool canGoBack() const { return m_back.size() > 1; }
    [[nodiscard]] bool canGoForward() const { return !m_forward.isEmpty(); }
    /// A folder was deleted: it and everything beneath it leave the history.
    void forget(const std::shared_ptr<PIFolder> &folder);

private:
    void removeWithSubfolders(const std::shared_ptr<PIFolder> &folder);

    QList<std::shared_ptr<PIFolder>> m_back; // the last one is on show
    QList<std::shared_ptr<PIFolder>> m_forward;
};
