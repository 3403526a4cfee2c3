#include "LinkedPaths.h"

#include "NativePath.h"

#include <cstdlib>
#include <memory>

QByteArray LinkedPaths::asSeenFrom(const QByteArray &givenPath, const QByteArray &path)
{
    if (givenPath.isEmpty() || resolved(givenPath) == path)
        return givenPath.isEmpty() ? path : givenPath;
    for (QByteArray folder = NativePath::parent(givenPath); folder.size() > 1; folder = NativePath::parent(folder)) {
        const QByteArray &real = resolved(folder);
        if (!real.isEmpty() && real != "/" && NativePath::isWithin(path, real))
            return NativePath::rebased(path, real, folder);
    }
    return path;
}

QByteArray LinkedPaths::withoutLinkedFolders(const QByteArray &path)
{
    const QByteArray &folder = resolved(NativePath::parent(path));
    return folder.isEmpty() ? path : NativePath::join(folder, NativePath::fileName(path));
}

const QByteArray &LinkedPaths::resolved(const QByteArray &folder)
{
    const auto known = m_resolved.constFind(folder);
    if (known != m_resolved.cend())
        return *known;
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(folder.constData(), nullptr), &std::free);
    return *m_resolved.insert(folder, QByteArray(real.get()));
}
