#include "ContainerState.h"

#include <utility>

ContainerState::ContainerState(const std::shared_ptr<PIGroup> &item)
    : m_item(item)
    , m_name(item->name())
    , m_folders(item->folders())
    , m_groupType(item->groupType())
    , m_closed(item->isClosed())
{
    if (const PIFolder *folder = std::as_const(*item).asFolder()) {
        m_photos = folder->photos();
        m_selection = folder->selection();
    }
}

void ContainerState::restore() const
{
    m_item->setName(m_name);
    m_item->setGroupType(m_groupType);
    m_item->setClosed(m_closed);
    setFolders(m_item, m_folders);
    if (PIFolder *folder = m_item->asFolder()) {
        folder->photos() = m_photos;
        folder->selection() = m_selection;
    }
}

void appendTree(QList<ContainerState> &states, const std::shared_ptr<PIGroup> &item)
{
    states.append(ContainerState(item));
    for (const auto &folder : std::as_const(item->folders()))
        appendTree(states, folder);
}

void setFolders(const std::shared_ptr<PIGroup> &container, const QList<std::shared_ptr<PIFolder>> &folders)
{
    for (const auto &folder : std::as_const(container->folders())) {
        if (folder->parent() == container) // and not of another one by now
            folder->setParent(nullptr);
    }
    container->folders() = folders;
    for (const auto &folder : folders)
        folder->setParent(container);
}
