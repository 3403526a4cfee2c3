#include "PropertyListLimits.h"

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace {

constexpr int kMaxDepth = 128;
constexpr quint64 kMaxUnfoldedBytes = quint64(1) << 30;
/// What a decoded object costs besides its text or data.
constexpr quint64 kObjectBytes = 128;

/// Where the markup that begins at `start` ends: behind its closing mark, or the end of the text.
qsizetype behind(QByteArrayView xml, qsizetype start, QByteArrayView mark)
{
    const qsizetype found = xml.indexOf(mark, start);
    return found < 0 ? xml.size() : found + mark.size();
}

bool isXmlShallow(QByteArrayView xml)
{
    int depth = 0;
    for (qsizetype at = xml.indexOf('<'); at >= 0 && at < xml.size(); at = xml.indexOf('<', at)) {
        const QByteArrayView rest = xml.sliced(at);
        if (rest.startsWith("<!--")) {
            at = behind(xml, at + 4, "-->");
        } else if (rest.startsWith("<![CDATA[")) {
            at = behind(xml, at + 9, "]]>");
        } else if (rest.startsWith("<?")) {
            at = behind(xml, at + 2, "?>");
        } else {
            const qsizetype end = behind(xml, at, ">");
            const bool closes = rest.startsWith("</");
            const bool stands = closes || rest.startsWith("<!") || (end - at > 2 && xml.at(end - 2) == '/');
            depth += closes ? -1 : (stands ? 0 : 1);
            if (depth > kMaxDepth)
                return false;
            at = end;
        }
    }
    return true;
}

/// Unfolds a binary list in thought: every object is looked at once, however often it is shared.
class BinaryList
{
public:
    explicit BinaryList(QByteArrayView bytes)
        : m_bytes(bytes)
    {}

    [[nodiscard]] bool isWithinLimits()
    {
        if (!readTrailer())
            return false;
        m_seen.resize(static_cast<std::size_t>(m_objectCount));
        return visit(m_root, 1).has_value();
    }

private:
    /// An object with everything below it.
    struct Tree
    {
        quint64 bytes = 0; ///< 0: not measured yet
        int height = 0;    ///< -1: its contents are being measured
    };

    bool readTrailer()
    {
        constexpr qsizetype trailerSize = 32;
        if (m_bytes.size() < 8 + trailerSize)
            return false;
        const quint64 trailer = static_cast<quint64>(m_bytes.size() - trailerSize);
        m_offsetSize = byteAt(trailer + 6);
        m_referenceSize = byteAt(trailer + 7);
        m_objectCount = number(trailer + 8, 8);
        m_root = number(trailer + 16, 8);
        m_table = number(trailer + 24, 8);
        const auto isSize = [](quint64 size) { return size >= 1 && size <= 8; };
        return isSize(m_offsetSize) && isSize(m_referenceSize) && m_table <= trailer &&
               m_objectCount <= (trailer - m_table) / m_offsetSize;
    }

    quint64 byteAt(quint64 at) const { return static_cast<quint8>(m_bytes.at(static_cast<qsizetype>(at))); }

    quint64 number(quint64 at, quint64 width) const
    {
        quint64 value = 0;
        for (quint64 i = 0; i < width; ++i)
            value = value << 8U | byteAt(at + i);
        return value;
    }

    /// Whether `count` pieces of `width` bytes lie in the file from `at`.
    bool holds(quint64 at, quint64 count, quint64 width) const
    {
        const quint64 size = static_cast<quint64>(m_bytes.size());
        return at <= size && count <= (size - at) / width;
    }

    /// The count in an object's head; moves `at` behind it.
    std::optional<quint64> readCount(quint64 &at) const
    {
        const quint64 small = byteAt(at++) & 0xFU;
        if (small != 0xF)
            return small;
        if (!holds(at, 1, 1) || (byteAt(at) & 0xF0U) != 0x10)
            return {};
        const quint64 width = quint64(1) << (byteAt(at++) & 0xFU);
        if (width > 8 || !holds(at, 1, width))
            return {};
        const quint64 count = number(at, width);
        at += width;
        return count;
    }

    std::optional<Tree> visit(quint64 object, int depth)
    {
        if (object >= m_objectCount)
            return {};
        Tree &seen = m_seen[static_cast<std::size_t>(object)];
        if (seen.height < 0 || depth + seen.height > kMaxDepth)
            return {};
        if (seen.bytes > 0)
            return seen;
        seen.height = -1;
        const std::optional<Tree> tree = measure(number(m_table + object * m_offsetSize, m_offsetSize), depth);
        seen = tree.value_or(Tree{0, -1});
        return tree;
    }

    std::optional<Tree> measure(quint64 at, int depth)
    {
        if (!holds(at, 1, 1))
            return {};
        const quint64 kind = byteAt(at) >> 4U;
        if (kind < 4 || kind == 8)
            return Tree{kObjectBytes, 1};
        const std::optional<quint64> count = readCount(at);
        const bool isDictionary = kind == 0xD;
        if (isDictionary || kind >= 0xA)
            return count ? measureContents(at, *count, isDictionary ? 2 : 1, depth) : std::nullopt;
        const quint64 width = kind == 6 ? 2 : 1;
        if (!count || !holds(at, *count, width))
            return {};
        return Tree{kObjectBytes + *count * 3, 1};
    }

    std::optional<Tree> measureContents(quint64 at, quint64 count, quint64 referencesEach, int depth)
    {
        if (!holds(at, count, referencesEach * m_referenceSize))
            return {};
        Tree whole{kObjectBytes, 1};
        for (quint64 i = 0; i < count * referencesEach; ++i) {
            const auto part = visit(number(at + i * m_referenceSize, m_referenceSize), depth + 1);
            if (!part || part->bytes > kMaxUnfoldedBytes - whole.bytes)
                return {};
            whole.bytes += part->bytes;
            whole.height = std::max(whole.height, part->height + 1);
        }
        return whole;
    }

    QByteArrayView m_bytes;
    quint64 m_offsetSize = 0;
    quint64 m_referenceSize = 0;
    quint64 m_objectCount = 0;
    quint64 m_root = 0;
    quint64 m_table = 0;
    std::vector<Tree> m_seen;
};

}

bool isPropertyListWithinLimits(QByteArrayView bytes)
{
    return bytes.startsWith("bplist") ? BinaryList(bytes).isWithinLimits() : isXmlShallow(bytes);
}
