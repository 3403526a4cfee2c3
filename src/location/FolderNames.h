#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

/// What stands in folders, each read once, when it is first asked for. One thread at a time.
class FolderNames
{
public:
    /// The names in a folder, as far as they can be read; nothing, with the reason, when none can.
    using Listing = std::function<std::optional<QStringList>(const QString &folder, QString *reason)>;

    struct Folder
    {
        QString place; ///< one for all the paths that lead there
        QSet<QString> names;
        bool isCaseBlind = false; ///< one file answers to a name in upper and in lower case
        QSet<QString> keys;       ///< of the names
        /// The same for all names of which there can only be one.
        [[nodiscard]] QString keyOf(const QString &name) const { return isCaseBlind ? name.toCaseFolded() : name; }
        QSet<QString> reserved; ///< nothing bears these, but nothing may get them
        QString failure;        ///< why the names could not be read; empty when they could
        /// Files of notes on pictures, ".xmp", by what stands before that: the name of a picture, or its stem.
        QHash<QString, QStringList> sidecars;
        /// The picture to which those belong, by the same; none when no picture has the name or the stem.
        QHash<QString, QString> owners;
    };

    /// Whether something answers to a path.
    using Look = std::function<bool(const QString &path)>;

    /// Without a listing the disk is read. `reserved` are paths.
    explicit FolderNames(Listing listing = {}, const QStringList &reserved = {}, Look look = {});

    /// `path` without a slash at its end. The answer stays where it is.
    [[nodiscard]] const Folder &at(const QString &path);
    /// Whether the disk knows the path, also by another spelling than that in the folder.
    [[nodiscard]] bool isOnDisk(const QString &path) const;

private:
    [[nodiscard]] bool isCaseBlind(const QString &path, const QSet<QString> &names) const;

    Listing m_listing;
    Look m_look;
    QHash<QString, QSet<QString>> m_reserved;          ///< names by folder
    QHash<QString, std::shared_ptr<Folder>> m_folders; ///< by every path that was asked for, and by place
};
