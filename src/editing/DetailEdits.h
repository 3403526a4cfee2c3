#pragma once

#include <QRectF>
#include <QString>

#include <memory>

class LibraryEditor;
class PIPhoto;

/// What the detail pane changes about one photo. Each is an undoable step and tells everyone who shows the photo;
/// false, with nothing changed, when it was refused. What would change nothing is not recorded. Main thread.
namespace DetailEdits {

bool setCaption(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QString &caption);
/// `text` as the user wrote it; new words join the library's keywords.
bool setKeywords(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QString &text);
/// One keyword of the library more, behind those there are.
bool addKeyword(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QString &keyword);
/// Pixels of the whole picture, y downward; an empty rectangle shows the whole picture again.
bool setCrop(LibraryEditor &editor, const std::shared_ptr<PIPhoto> &photo, const QRectF &crop);

}
