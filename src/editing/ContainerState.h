#pragma once

#include "IndexSet.h"
#include "PIFolder.h"

#include <QList>

#include <memory>

/// What makes up a group or folder, apart from its guid: its name, its state and its lists. The lists are shared until
/// one of them changes, so that this costs little however many photos there are.
class ContainerState
{
public:
    explicit ContainerState(const std::shared_ptr<PIGroup> &item);

    [[nodiscard]] const std::shared_ptr<PIGroup> &item() const { return m_item; }
    [[nodiscard]] const PIGroup::PhotoList &photos() const { return m_photos; }
    /// Makes the item what it was. Its folders get it for their parent.
    void restore() const;

private:
    std::shared_ptr<PIGroup> m_item;
    QString m_name;
    QList<std::shared_ptr<PIFolder>> m_folders;
    PIGroup::PhotoList m_photos;
    IndexSet m_selection;
    GroupType m_groupType;
    bool m_closed;
};

/// The states of a group or folder and of everything beneath it.
void appendTree(QList<ContainerState> &states, const std::shared_ptr<PIGroup> &item);

/// Makes `folders` the list of the container. Those that leave it have no parent afterwards.
void setFolders(const std::shared_ptr<PIGroup> &container, const QList<std::shared_ptr<PIFolder>> &folders);
