#pragma once

#include "UndoRecorder.h"

class PhotoLibrary;

/// Lets every change happen and marks the library as changed.
class DirtyRecorder final : public UndoRecorder
{
public:
    explicit DirtyRecorder(PhotoLibrary &library)
        : m_library(library)
    {}
    [[nodiscard]] bool setUndoAction(UndoAction action, UndoName descriptor, const UndoContext &context) override;

private:
    PhotoLibrary &m_library;
};
