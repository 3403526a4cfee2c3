#pragma once

#include "ByteSource.h"

#include <QByteArray>
#include <QHash>

inline const QByteArray kXmpContent = QByteArrayLiteral("application/rdf+xml");

/// The pieces of a HEIF or AVIF file that stand beside its picture, by kind: "Exif", or kXmpContent. Of each kind the
/// first; pieces larger than `most` are left out.
[[nodiscard]] QHash<QByteArray, QByteArray> readHeifItems(const ByteSource &source, qint64 most);
