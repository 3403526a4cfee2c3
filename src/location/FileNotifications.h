#pragma once

#include <QString>

/// About a PIFileRef whose image file's content changed.
inline const QString kFileChangeNotification = QStringLiteral("hmphoto.fileChange");
/// About a PIFileRef whose date and size became known, or turned out not to be known.
inline const QString kFileFactsNotification = QStringLiteral("hmphoto.fileFacts");
