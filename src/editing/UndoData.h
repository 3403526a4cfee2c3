#pragma once

#include "ContainerState.h"
#include "EffectSetStore.h"
#include "PhotoMoment.h"

#include <QList>
#include <QString>

#include <memory>

/// What an undo entry holds of the model. Which members are filled depends on the kind of action.
struct UndoData
{
    // The snapshot
    QList<std::shared_ptr<PIGroup>> groups;   ///< of the library
    QList<std::shared_ptr<PIFolder>> folders; ///< of the container
    QList<ContainerState> containers;
    PIGroup::PhotoList photos;           ///< of the folder
    std::shared_ptr<PhotoMoment> moment; ///< when the snapshot's photos were what it is to bring back
    std::shared_ptr<const PIPhoto> photo;
    EffectSetStore effectSets;
    QString containerGuid; ///< of the group or folder that the snapshot belongs to

    // What else comes back with it
    QString shownFolderGuid; ///< of the folder in the grid when the entry was made; empty when there was none
    IndexSet selection;      ///< in the grid at that time
    bool dirty = false;      ///< the library's dirty flag on the other side of the exchange
};
