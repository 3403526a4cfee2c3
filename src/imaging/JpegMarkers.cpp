#include "JpegMarkers.h"

#include <algorithm>
#include <map>

namespace {

constexpr qint64 kWindow = 128 * 1024;
/// Real files stay far below both; what exceeds them is made to keep us busy.
constexpr int kMaxSegments = 20'000;
constexpr qsizetype kMaxProfile = 16 << 20;
constexpr qsizetype kMaxTexts = 1 << 20;

/// Reads a source in windows, so that a walk over small segments costs one read.
class Cursor
{
public:
    explicit Cursor(const ByteSource &source)
        : m_source(source)
    {}

    /// -1 at the end.
    int byteAt(qint64 position)
    {
        if (position < m_start || position >= m_start + m_window.size()) {
            m_window = m_source.bytes(position, kWindow);
            m_start = position;
        }
        return m_window.isEmpty() ? -1 : uchar(m_window.at(position - m_start));
    }

    int numberAt(qint64 position)
    {
        const int high = byteAt(position);
        const int low = byteAt(position + 1);
        return high < 0 || low < 0 ? -1 : high << 8 | low;
    }

    QByteArray bytesAt(qint64 position, qint64 count)
    {
        if (position >= m_start && position + count <= m_start + m_window.size())
            return m_window.mid(position - m_start, count);
        return m_source.bytes(position, count);
    }

private:
    const ByteSource &m_source;
    QByteArray m_window;
    qint64 m_start = 0;
};

bool isFrame(int marker)
{
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

/// A profile is cut into numbered pieces, one per segment.
class ProfilePieces
{
public:
    void add(const QByteArray &segment)
    {
        constexpr qsizetype head = 14; // signature, number, count
        if (!segment.startsWith(QByteArrayView("ICC_PROFILE\0", 12)) || segment.size() <= head)
            return;
        m_total += segment.size() - head;
        if (m_total <= kMaxProfile)
            m_pieces.emplace(uchar(segment.at(12)), segment.mid(head));
        m_count = uchar(segment.at(13));
    }

    QByteArray joined() const
    {
        QByteArray profile;
        for (const auto &[number, piece] : m_pieces)
            profile += piece;
        return m_pieces.size() == m_count ? profile : QByteArray();
    }

private:
    std::map<int, QByteArray> m_pieces;
    size_t m_count = 0;
    qsizetype m_total = 0;
};

/// All coefficients of the frame whose component table stands at `table`.
qint64 bytesOfCoefficients(Cursor &cursor, qint64 table, const JpegMarkers &markers)
{
    constexpr int blockSide = 8;
    constexpr qint64 blockBytes = 64 * sizeof(qint16);
    const auto sampling = [&](int component) {
        const int both = cursor.byteAt(table + 3 * component + 1);
        return QSize(std::clamp(both >> 4, 1, 4), std::clamp(both & 0xf, 1, 4));
    };
    QSize most(1, 1);
    for (int i = 0; i < markers.components; ++i)
        most = most.expandedTo(sampling(i));
    const QSize units(markers.size.width() / (most.width() * blockSide) + 1,
                      markers.size.height() / (most.height() * blockSide) + 1);
    qint64 blocks = 0;
    for (int i = 0; i < markers.components; ++i)
        blocks += qint64(units.width()) * sampling(i).width() * units.height() * sampling(i).height();
    return blocks * blockBytes;
}

void readSegment(Cursor &cursor, int marker, qint64 body, int length, JpegMarkers &markers, ProfilePieces &profile)
{
    if (isFrame(marker) && length >= 6) {
        markers.size = QSize(cursor.numberAt(body + 3), cursor.numberAt(body + 1));
        markers.components = cursor.byteAt(body + 5);
        markers.isProgressive = marker == 0xc2 || marker == 0xca;
        markers.coefficientBytes = bytesOfCoefficients(cursor, body + 6, markers);
    } else if (marker == 0xe1 && markers.exif.isEmpty()) {
        if (cursor.bytesAt(body, 6) == QByteArrayView("Exif\0\0", 6))
            markers.exif = cursor.bytesAt(body, length);
    } else if (marker == 0xe2 && cursor.byteAt(body) == 'I') {
        profile.add(cursor.bytesAt(body, length));
    }
}

/// What people and programs wrote about the picture. Resources may be cut into several segments.
void readTexts(Cursor &cursor, int marker, qint64 body, int length, JpegMarkers &markers)
{
    static constexpr QByteArrayView kPacket("http://ns.adobe.com/xap/1.0/\0", 29);
    static constexpr QByteArrayView kResources("Photoshop 3.0\0", 14);
    const auto begins = [&](QByteArrayView head) {
        return length > head.size() && cursor.bytesAt(body, head.size()) == head;
    };
    const auto rest = [&](QByteArrayView head) { return cursor.bytesAt(body + head.size(), length - head.size()); };
    if (marker == 0xed && markers.resources.size() < kMaxTexts && begins(kResources))
        markers.resources += rest(kResources);
    else if (marker == 0xe1 && markers.xmp.isEmpty() && begins(kPacket))
        markers.xmp = rest(kPacket);
}

/// Markers that stand alone, without a length.
bool isBare(int marker)
{
    return marker == 0x01 || (marker >= 0xd0 && marker <= 0xd7);
}

/// The position behind any fill bytes and the next marker, which is stored in `marker`; -1 when there is none.
qint64 nextMarker(Cursor &cursor, qint64 position, int &marker)
{
    if (cursor.byteAt(position) != 0xff)
        return -1;
    while ((marker = cursor.byteAt(position)) == 0xff)
        ++position;
    return marker > 0 ? position + 1 : -1;
}

}

std::optional<JpegMarkers> readJpegMarkers(const ByteSource &source, JpegTexts texts)
{
    Cursor cursor(source);
    if (cursor.numberAt(0) != 0xffd8)
        return std::nullopt;
    JpegMarkers markers;
    ProfilePieces profile;
    int componentsOfScan = 0;
    qint64 position = 2;
    for (int i = 0; i < kMaxSegments; ++i) {
        int marker = 0;
        position = nextMarker(cursor, position, marker);
        if (position >= 0 && isBare(marker))
            continue;
        const int length = position < 0 ? -1 : cursor.numberAt(position);
        constexpr int startOfScan = 0xda;
        if (marker == startOfScan)
            componentsOfScan = cursor.byteAt(position + 2);
        if (length < 2 || marker == startOfScan)
            break;
        readSegment(cursor, marker, position + 2, length - 2, markers, profile);
        if (texts == JpegTexts::Read)
            readTexts(cursor, marker, position + 2, length - 2, markers);
        position += length;
    }
    markers.profile = profile.joined();
    if (!markers.isProgressive && componentsOfScan == markers.components)
        markers.coefficientBytes = 0;
    const bool usable = markers.components == 1 || markers.components == 3 || markers.components == 4;
    return usable && !markers.size.isEmpty() ? std::optional(markers) : std::nullopt;
}
