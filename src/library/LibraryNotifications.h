#pragma once

#include <QString>

/// Posted before a save numbers everything; no object.
inline const QString kSavingNotification = QStringLiteral("hmphoto.saving");
/// About the PIPhoto that is now the current one; no object when there is none.
inline const QString kSelectNotification = QStringLiteral("hmphoto.select");
/// About a PIPhoto that is to be shown and selected, wherever in the library it is.
inline const QString kForcePhotoNotification = QStringLiteral("hmphoto.forcePhoto");
/// About a PIPhoto whose cell must be redrawn.
inline const QString kRedrawNotification = QStringLiteral("hmphoto.redraw");
/// About a PIPhoto whose effects were changed: what shows it large shows it anew.
inline const QString kPhotoNotification = QStringLiteral("hmphoto.photo");
/// A crop that is being drawn is accepted; no object.
inline const QString kNormalizeNotification = QStringLiteral("hmphoto.normalize");
/// About a PIPhoto whose picture must be redrawn.
inline const QString kThumbnailNotification = QStringLiteral("hmphoto.thumbnail");
/// The effect-set store changed; no object.
inline const QString kEffectSetsNotification = QStringLiteral("hmphoto.effectSets");
/// The keyword vocabulary or its use changed; no object.
inline const QString kKeywordsNotification = QStringLiteral("hmphoto.keywords");
/// Something about the current photo may be another; no object.
inline const QString kRedetailNotification = QStringLiteral("hmphoto.redetail");
