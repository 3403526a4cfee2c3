#include "KeywordEdits.h"

#include "KeywordText.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"

#include <QSet>

#include <algorithm>
#include <utility>

namespace {

bool isAnyKeyword(const QString &text)
{
    const auto spans = KeywordText::spansIn(text);
    return std::any_of(spans.cbegin(), spans.cend(), [&](const auto &span) { return span.isKeyword(text); });
}

}

bool KeywordEdits::addKeyword(LibraryEditor &editor, const PIGroup::PhotoList &photos,
                              const std::shared_ptr<PIFolder> &folder, const QString &keyword)
{
    KeywordVocabulary &vocabulary = editor.library().keywords();
    const QString added = keyword.trimmed();
    const auto &there = std::as_const(*folder).photos();
    const QSet<std::shared_ptr<PIPhoto>> held(there.cbegin(), there.cend());
    PIGroup::PhotoList changed = photos;
    changed.removeIf([&](const auto &photo) {
        return !held.contains(photo) || photo->keywordList(vocabulary).contains(added, Qt::CaseInsensitive);
    });
    if (changed.isEmpty() || !isAnyKeyword(added))
        return true;
    const UndoContext context = photos.size() == 1 ? UndoContext{.container = {}, .photo = photos.first()}
                                                   : UndoContext{.container = folder, .photo = {}};
    const auto action = photos.size() == 1 ? UndoAction::Photo : UndoAction::PhotoList;
    if (!editor.recorder().setUndoAction(action, UndoName::Keywords, context))
        return false;
    for (const auto &photo : changed)
        photo->setKeywordList(photo->keywordList(vocabulary) + u' ' + added, vocabulary);
    editor.library().notifications().post(kKeywordsNotification);
    editor.library().notifications().post(kRedetailNotification);
    return true;
}
