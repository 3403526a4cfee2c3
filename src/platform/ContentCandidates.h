#pragma once

#include "DirectoryWalk.h"

#include <QByteArray>
#include <QSet>

#include <functional>
#include <vector>

/// Files met on walks that may turn out to be copies of lost ones: those with one of the usual extensions, whatever
/// that of the lost file, or else with its own. Kept by name alone, in about twenty bytes each, and looked at only when
/// something stays lost to the end.
class ContentCandidates
{
public:
    /// `extensions` are the usual ones, in lower case and without the dot. Nothing is kept before a name is wanted.
    explicit ContentCandidates(QSet<QByteArray> extensions);

    /// A file of this name is lost. Those with its extension, or with none if it has none, are kept as well.
    void addWantedName(QByteArrayView name);

    void consider(const DirectoryWalk::Folder &folder, const DirectoryWalk::Entry &entry);
    /// Whether there were more files than are worth remembering: then nobody can say that a copy is the only one.
    [[nodiscard]] bool hasOverflowed() const { return m_overflowed; }

    using Visitor = std::function<bool(const QByteArray &folder, const std::vector<const char *> &names)>;
    /// Calls `visitor` for every folder that holds candidates until it answers false.
    void visit(const Visitor &visitor) const;

private:
    struct Group
    {
        QByteArray folder;
        qsizetype firstName = 0; ///< its place in m_names; the names end where the next group's begin
    };
    static constexpr qsizetype kMaxNameBytes = 256 * 1024 * 1024;

    [[nodiscard]] bool isWanted(QByteArrayView name);

    QSet<QByteArray> m_extensions;
    bool m_wantsAnything = false;
    QByteArray m_lastExtension; ///< as it was spelled; the next file nearly always has the same
    bool m_lastIsWanted = false;
    std::vector<Group> m_groups;
    QByteArray m_names; ///< each with its zero
    bool m_overflowed = false;
};
