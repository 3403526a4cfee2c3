#pragma once

#include "PIGroup.h"

class LibraryEditor;

/// Changes to the keywords of several photos. Main thread.
namespace KeywordEdits {

/// Gives those photos the keyword that are still in the folder and whose lists of keywords do not contain its text, not
/// even as a part of a word. Several keywords when the text has blanks and no quotes. One undoable step; false, with
/// nothing changed, when refused. What would change nothing is not recorded.
bool addKeyword(LibraryEditor &editor, const PIGroup::PhotoList &photos, const std::shared_ptr<PIFolder> &folder,
                const QString &keyword);

}
