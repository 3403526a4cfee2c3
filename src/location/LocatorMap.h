#pragma once

#include "FreeBlockList.h"

#include <QHash>
#include <QString>
#include <QVariant>

#include <optional>

/// Which block of the locator database holds whose locator, and which blocks are free: the content of "locators.plist".
struct LocatorMap
{
    QHash<QString, quint32> offsets; ///< by guid
    FreeBlockList freeBlocks;

    /// Whether a locator can be kept under this name.
    [[nodiscard]] static bool isGuid(const QString &text);

    /// From a property list. Entries that make no sense for a database of `fileLength` bytes are left out, and so are
    /// blocks that overlap others: writing to them would destroy what belongs to someone else. Nothing when it is no
    /// dictionary.
    [[nodiscard]] static std::optional<LocatorMap> fromPropertyList(const QVariant &list, quint64 fileLength);
    /// Its XML form; nothing when a guid has no place in it.
    [[nodiscard]] std::optional<QByteArray> toPropertyList() const;
};
