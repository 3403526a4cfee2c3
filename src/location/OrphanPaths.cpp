#include "OrphanPaths.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr std::size_t kKeyAtHand = 2 * sizeof(quint64);

QByteArrayView viewOf(std::string_view bytes)
{
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

QString textOf(QByteArrayView utf8)
{
    // A byte-order mark may well begin a name, and would be dropped.
    constexpr QByteArrayView kMark("\xef\xbb\xbf");
    if (utf8.startsWith(kMark))
        return QChar(QChar::ByteOrderMark) + QString::fromUtf8(utf8.sliced(kMark.size()));
    return QString::fromUtf8(utf8);
}

char lowered(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

}

bool OrphanPaths::add(const QByteArray &folder, std::string_view name)
{
    if (!viewOf(name).isValidUtf8() || !isText(folder))
        return false;
    makeKey(name.substr(0, name.rfind('.')));
    const std::size_t place = m_bytes.size();
    if (place + static_cast<std::size_t>(folder.size()) + name.size() + m_key.size() + 3 >
        std::numeric_limits<quint32>::max())
        return false;
    if (!folder.isEmpty())
        m_bytes.append(folder.constData(), static_cast<std::size_t>(folder.size())).push_back('/');
    m_bytes.append(name).push_back('\0');
    if (m_key.size() > kKeyAtHand)
        m_bytes.append(m_key, kKeyAtHand);
    m_bytes.push_back('\0');
    m_files.push_back({keyPart(0), keyPart(sizeof(quint64)), static_cast<quint32>(place)});
    return true;
}

/// Files come folder by folder.
bool OrphanPaths::isText(const QByteArray &folder)
{
    if (m_folder.constData() != folder.constData()) {
        m_folder = folder;
        m_folderIsText = folder.isValidUtf8();
    }
    return m_folderIsText;
}

void OrphanPaths::makeKey(std::string_view nameWithoutExtension)
{
    m_key.assign(nameWithoutExtension);
    if (std::any_of(m_key.cbegin(), m_key.cend(), [](char c) { return static_cast<signed char>(c) < 0; }))
        m_key = textOf(viewOf(nameWithoutExtension)).toCaseFolded().toStdString();
    else
        std::transform(m_key.cbegin(), m_key.cend(), m_key.begin(), lowered);
}

/// As a number that compares like the bytes; those beyond the end are zero.
quint64 OrphanPaths::keyPart(std::size_t at) const
{
    char part[sizeof(quint64)] = {};
    if (at < m_key.size())
        std::memcpy(part, m_key.data() + at, std::min(m_key.size() - at, sizeof part));
    return qFromBigEndian<quint64>(part);
}

bool OrphanPaths::isBefore(const File &left, const File &right) const
{
    if (left.first != right.first)
        return left.first < right.first;
    if (left.second != right.second)
        return left.second < right.second;
    const char *paths[] = {m_bytes.data() + left.place, m_bytes.data() + right.place};
    const int byKey = std::strcmp(paths[0] + std::strlen(paths[0]) + 1, paths[1] + std::strlen(paths[1]) + 1);
    return byKey != 0 ? byKey < 0 : std::strcmp(paths[0], paths[1]) < 0;
}

void OrphanPaths::sort()
{
    std::sort(m_files.begin(), m_files.end(),
              [this](const File &left, const File &right) { return isBefore(left, right); });
}

QString OrphanPaths::path(qsizetype index) const
{
    return textOf(m_bytes.data() + m_files[static_cast<std::size_t>(index)].place);
}
