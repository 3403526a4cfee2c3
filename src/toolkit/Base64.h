#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Standard Base64 with a line feed after every 76 characters.
[[nodiscard]] QString NewBase64StringFromData(const QByteArray &bytes);

/// Line feeds and carriage returns are skipped, the first "=" ends the data; any other strange character refuses all.
[[nodiscard]] std::optional<QByteArray> NewDataFromBase64String(const QString &text);
