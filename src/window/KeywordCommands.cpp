#include "KeywordCommands.h"

#include "LibraryActions.h"
#include "PIAddKeywordDialog.h"
#include "PIKeywordDialog.h"

void bindKeywordCommands(LibraryEditor &editor, QVUndoManager &undo, LibraryActions &actions, QWidget &window)
{
    actions.bind(Command::AddKeyword, [&editor, &window](bool) { PIAddKeywordDialog::addKeyword(editor, window); });
    actions.bind(Command::ManageKeywords,
                 [&editor, &undo, &window](bool) { PIKeywordDialog::manageKeywords(editor, undo, window); });
}
