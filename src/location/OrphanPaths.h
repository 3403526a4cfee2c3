#pragma once

#include <QByteArray>
#include <QString>

#include <string>
#include <string_view>
#include <vector>

/// Paths of any number of files in the order in which people look through them: by file name without extension, without
/// regard to case. Kept as the bytes that the kernel gave; texts are made for those that somebody looks at.
class OrphanPaths
{
public:
    /// `name` with an extension, in a folder given by its path below the root ("" for the root itself). False when
    /// that is no text, or when there are more paths than anybody could look through.
    [[nodiscard]] bool add(const QByteArray &folder, std::string_view name);
    /// After everything was added.
    void sort();

    [[nodiscard]] qsizetype count() const { return static_cast<qsizetype>(m_files.size()); }
    /// Below the root.
    [[nodiscard]] QString path(qsizetype index) const;

private:
    /// What comes first of a file's sort key decides nearly every comparison, and is at hand.
    struct File
    {
        quint64 first;
        quint64 second;
        quint32 place; ///< in m_bytes, of the path and then the rest of the key, each with a zero
    };
    [[nodiscard]] bool isText(const QByteArray &folder);
    void makeKey(std::string_view nameWithoutExtension);
    [[nodiscard]] quint64 keyPart(std::size_t at) const;
    [[nodiscard]] bool isBefore(const File &left, const File &right) const;

    std::vector<File> m_files;
    std::string m_bytes;
    std::string m_key;   ///< of the file being added
    QByteArray m_folder; ///< of the last one
    bool m_folderIsText = true;
};
