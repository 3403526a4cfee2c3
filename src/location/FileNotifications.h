#pragma once

#include <QString>

/// About a PIFileRef whose image file's content changed.
inline const QString kFileChangeNotification = QStringLiteral("hmphoto.fileChange");
