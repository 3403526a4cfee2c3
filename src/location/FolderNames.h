#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// What stands in folders, each read once, when it is first asked for. One thread at a time.
class FolderNames
{
public:
    /// The names in a folder, as far as they can be read.
    using Listing = std::function<QStringList(const QString &folder)>;

    struct Folder
    {
        QString place; ///< one for all the paths that lead there
        QSet<QString> names;
        /// Files of notes on pictures, ".xmp", by what stands before that: the name of a picture, or its stem.
        QHash<QString, QStringList> sidecars;
        /// The pictures that have such a stem, by it.
        QHash<QString, QStringList> pictures;
    };

    /// Without a listing the disk is read.
    explicit FolderNames(Listing listing = {})
        : m_listing(std::move(listing))
    {}

    /// `path` without a slash at its end. The answer stays where it is.
    [[nodiscard]] const Folder &at(const QString &path);

private:
    [[nodiscard]] QStringList namesIn(const QString &path) const;

    Listing m_listing;
    QHash<QString, std::shared_ptr<Folder>> m_folders; ///< by every path that was asked for, and by place
};
