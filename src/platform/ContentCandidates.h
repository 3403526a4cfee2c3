#pragma once

#include "DirectoryWalk.h"

#include <QByteArray>
#include <QSet>

#include <functional>
#include <vector>

/// Files met on walks that may turn out to be copies of lost ones: those with the extension of a lost file. Kept by
/// name alone, in about twenty bytes each, and looked at only when something stays lost to the end.
class ContentCandidates
{
public:
    /// Files with the extension of this name are kept from now on. A name without extension adds nothing.
    void addWantedName(QByteArrayView name);
    [[nodiscard]] bool wantsAnything() const { return !m_extensions.isEmpty(); }

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
    QByteArray m_lastExtension; ///< as it was spelled; the next file nearly always has the same
    bool m_lastIsWanted = false;
    std::vector<Group> m_groups;
    QByteArray m_names; ///< each with its zero
    bool m_overflowed = false;
};
