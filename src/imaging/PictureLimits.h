#pragma once

#include <QSize>
#include <QString>

/// Whether a picture that claims this size may be decoded; if not, `reason` (when given) tells why.
[[nodiscard]] bool isAcceptableSize(QSize size, QString *reason);

/// Fills `reason`, when given.
void tell(QString *reason, const QString &text);
