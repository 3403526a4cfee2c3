#pragma once

#include <QStringList>

/// Shows the files selected in the desktop's file manager; when none answers, their folders are opened.
/// Returns at once; the call to the file manager does not block.
void revealInFileViewer(const QStringList &paths);
