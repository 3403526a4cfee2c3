#include "DirtyRecorder.h"

#include "PhotoLibrary.h"

bool DirtyRecorder::setUndoAction(UndoAction, UndoName, const UndoContext &)
{
    m_library.setDirty(true);
    return true;
}
