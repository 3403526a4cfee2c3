#pragma once

#include <QSize>
#include <QString>

/// Whether a picture that claims this size may be decoded; if not, `reason` (when given) tells why.
[[nodiscard]] bool isAcceptableSize(QSize size, QString *reason);

/// Whether a decoder that must hold a whole picture may hold so much.
[[nodiscard]] bool isAcceptableWhole(qint64 bytes, QString *reason);

/// Fills `reason`, when given.
void tell(QString *reason, const QString &text);
