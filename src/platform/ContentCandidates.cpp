#include "ContentCandidates.h"

namespace {

/// Empty when there is none. The dot that hides a file begins no extension.
QByteArrayView extensionOf(QByteArrayView name)
{
    const qsizetype dot = name.lastIndexOf('.');
    return dot > 0 ? name.sliced(dot + 1) : QByteArrayView();
}

}

ContentCandidates::ContentCandidates(QSet<QByteArray> extensions)
    : m_extensions(std::move(extensions))
{}

void ContentCandidates::addWantedName(QByteArrayView name)
{
    m_wantsAnything = true;
    const QByteArrayView extension = extensionOf(name);
    if (m_lastIsWanted && extension == m_lastExtension)
        return;
    m_lastExtension = extension.toByteArray();
    m_lastIsWanted = true;
    m_extensions.insert(m_lastExtension.toLower());
}

bool ContentCandidates::isWanted(QByteArrayView name)
{
    const QByteArrayView extension = extensionOf(name);
    if (extension != m_lastExtension) {
        m_lastExtension = extension.toByteArray();
        m_lastIsWanted = m_extensions.contains(m_lastExtension.toLower());
    }
    return m_lastIsWanted;
}

void ContentCandidates::consider(const DirectoryWalk::Folder &folder, const DirectoryWalk::Entry &entry)
{
    const QByteArrayView name(entry.name);
    if (entry.type != EntryType::File || !m_wantsAnything || !isWanted(name))
        return;
    if (m_names.size() + name.size() >= kMaxNameBytes) {
        m_overflowed = true;
        return;
    }
    if (m_groups.empty() || m_groups.back().folder != folder.path)
        m_groups.push_back({folder.path, m_names.size()});
    m_names.append(name).append('\0');
}

void ContentCandidates::visit(const Visitor &visitor) const
{
    std::vector<const char *> names;
    for (std::size_t group = 0; group < m_groups.size(); ++group) {
        const qsizetype end = group + 1 < m_groups.size() ? m_groups[group + 1].firstName : m_names.size();
        names.clear();
        for (qsizetype at = m_groups[group].firstName; at < end; at = m_names.indexOf(char(0), at) + 1)
            names.push_back(m_names.constData() + at);
        if (!visitor(m_groups[group].folder, names))
            return;
    }
}
