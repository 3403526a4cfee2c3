#pragma once

#include "PhotoPicture.h"

class QPainter;
class QWidget;

/// What is said of the photo in that state: in its stead when it cannot be shown.
[[nodiscard]] QString photoMessage(PhotoPicture::State state, const PIPhoto *photo);
/// Paints the message in the middle of the view, below a broken picture frame, in the colour of quiet text.
void paintPhotoMessage(QPainter &painter, const QWidget &view, const QString &message);
/// Paints a few words over a picture, so that they can be read on any: with `flags` as for text, in `area`.
void paintPictureNote(QPainter &painter, const QRect &area, int flags, const QString &text);
