#include "DetailEdits.h"

#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"

namespace {

bool record(LibraryEditor &editor, UndoName name, const std::shared_ptr<PIPhoto> &photo)
{
    return editor.recorder().setUndoAction(UndoAction::Photo, name, {.container = {}, .photo = photo});
}

/// Tried on copies: a change that is refused must not leave its words behind.
bool hasKeywords(const PIPhoto &photo, const QString &text, KeywordVocabulary vocabulary)
{
    PIPhoto trial;
    trial.setKeywordList(text, vocabulary);
    return trial.keywordIndexes() == photo.keywordIndexes();
}

}

bool DetailEdits::setCaption(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QString &caption)
{
    if (caption == photo->caption())
        return true;
    if (!record(editor, UndoName::Caption, photo))
        return false;
    photo->setCaption(caption);
    editor.library().notifications().post(kRedrawNotification, photo);
    return true;
}

bool DetailEdits::setKeywords(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QString &text)
{
    KeywordVocabulary &vocabulary = editor.library().keywords();
    if (hasKeywords(*photo, text, vocabulary))
        return true;
    if (!record(editor, UndoName::Keywords, photo))
        return false;
    const qsizetype knownBefore = vocabulary.count();
    photo->setKeywordList(text, vocabulary);
    NotificationCenter &notifications = editor.library().notifications();
    if (vocabulary.count() > knownBefore)
        notifications.post(kKeywordsNotification);
    notifications.post(kRedrawNotification, photo);
    return true;
}

bool DetailEdits::addKeyword(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QString &keyword)
{
    const QString text = photo->keywordList(editor.library().keywords());
    return setKeywords(editor, photo, text.isEmpty() ? keyword : text + u' ' + keyword);
}

bool DetailEdits::setCrop(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QRectF &crop)
{
    if (crop == photo->cropRect())
        return true;
    if (!record(editor, UndoName::Crop, photo))
        return false;
    photo->setCropRect(crop);
    editor.library().pictureChanged(*photo);
    return true;
}
