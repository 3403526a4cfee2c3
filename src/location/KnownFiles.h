#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QStringList>

#include <string_view>
#include <vector>

/// The files beneath a folder that are known already, arranged by the folders in which they stand: who walks folders
/// asks for each of them once, and then for one name after the other at next to no cost. Paths and names are bytes as
/// the kernel takes them.
class KnownFiles
{
public:
    /// `roots` are paths of one and the same folder; what stands elsewhere is left out.
    KnownFiles(const QStringList &paths, const QList<QByteArray> &roots);

    /// The names that are known in one folder: a table of places in the bytes of all names.
    class Names
    {
    public:
        void add(std::string_view name, quint32 place);
        /// `name` ends with a zero; `bytes` are those that places are in.
        [[nodiscard]] bool contains(std::string_view name, const char *bytes) const;

    private:
        struct Slot
        {
            quint32 hash = 0;
            quint32 place = 0; ///< 0: free
        };
        void insert(Slot slot);
        std::vector<Slot> m_slots;
        std::size_t m_count = 0;
    };

    /// One folder to ask, given by its path below the root ("" for the root itself). As valid as this.
    class Folder
    {
    public:
        [[nodiscard]] bool contains(std::string_view name) const { return m_names && m_names->contains(name, m_bytes); }

    private:
        friend KnownFiles;
        const Names *m_names = nullptr;
        const char *m_bytes = nullptr;
    };
    [[nodiscard]] Folder folder(const QByteArray &relativePath) const;

private:
    [[nodiscard]] Names *namesIn(const QList<QByteArray> &roots, const QByteArray &folder);
    void addName(Names &names, QStringView name);

    QByteArray m_bytes{1, '\0'}; ///< names, each with its zero; place 0 is none's
    QHash<QByteArray, Names> m_folders;
};
