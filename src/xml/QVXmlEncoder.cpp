#include "QVXmlEncoder.h"

#include <algorithm>
#include <array>
#include <charconv>

QVXmlEncoder::QVXmlEncoder(qsizetype expectedLength)
{
    m_xml.reserve(expectedLength);
    m_xml += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
}

namespace {

enum class Treatment : quint8 { Copy, Drop, Replace };

constexpr std::array<Treatment, 128> treatments = [] {
    std::array<Treatment, 128> table{};
    std::fill_n(table.begin(), 0x20, Treatment::Drop);
    table[0x7f] = Treatment::Drop;
    table['\t'] = table['\n'] = table['\r'] = Treatment::Copy;
    table['&'] = table['<'] = table['>'] = table['"'] = Treatment::Replace;
    return table;
}();

QByteArrayView entity(char16_t unit)
{
    return unit == u'&' ? "&amp;" : unit == u'<' ? "&lt;" : unit == u'>' ? "&gt;" : "&quot;";
}

/// The next character of `text` from `i` on, which is beyond ASCII.
char *encodeCharacter(QStringView text, qsizetype &i, char *out)
{
    char32_t code = text.utf16()[i++];
    const bool paired = QChar::isHighSurrogate(code) && i < text.size() && text[i].isLowSurrogate();
    if (paired)
        code = QChar::surrogateToUcs4(static_cast<char16_t>(code), text.utf16()[i++]);
    else if (QChar::isSurrogate(code))
        code = QChar::ReplacementCharacter;
    else if (code < 0xa0 || code >= 0xfffe)
        return out; // the upper control characters, and the two codes that no document may hold

    const auto continuation = [code](int shift) { return static_cast<char>(0x80 | ((code >> shift) & 0x3f)); };
    if (code < 0x800) {
        *out++ = static_cast<char>(0xc0 | (code >> 6));
    } else {
        if (code < 0x10000) {
            *out++ = static_cast<char>(0xe0 | (code >> 12));
        } else {
            *out++ = static_cast<char>(0xf0 | (code >> 18));
            *out++ = continuation(12);
        }
        *out++ = continuation(6);
    }
    *out++ = continuation(0);
    return out;
}

/// Narrows a block of plain text; false when there is something in it to look at closely. Two loops without branches,
/// in the form that compilers turn into vector instructions; inlined, this one is unrolled instead.
constexpr qsizetype blockSize = 16;
[[gnu::noinline]] bool narrowBlock(const char16_t *text, char *out)
{
    int odd = 0;
    for (qsizetype i = 0; i < blockSize; ++i) {
        const auto unit = static_cast<qint16>(text[i]);
        odd += (unit < 0x20) + (unit > 0x7e) + (unit == '&') + (unit == '<') + (unit == '>') + (unit == '"');
    }
    std::array<char, blockSize> narrow; // of its own, so that it cannot be taken to overlap the text
    for (qsizetype i = 0; i < blockSize; ++i)
        narrow[static_cast<size_t>(i)] = static_cast<char>(text[i]);
    std::copy_n(narrow.begin(), blockSize, out);
    return odd == 0;
}

constexpr qsizetype longestEntity = 6;

/// Writes at most longestEntity bytes per unit of `text`.
char *encode(QStringView text, char *out)
{
    for (qsizetype i = 0; i < text.size();) {
        if (i + blockSize <= text.size() && narrowBlock(text.utf16() + i, out)) {
            i += blockSize;
            out += blockSize;
            continue;
        }
        const qsizetype blockEnd = std::min(i + blockSize, text.size());
        while (i < blockEnd) {
            const char16_t unit = text.utf16()[i];
            if (unit >= 0x80) {
                out = encodeCharacter(text, i, out);
                continue;
            }
            ++i;
            if (treatments[unit] == Treatment::Copy)
                *out++ = static_cast<char>(unit);
            else if (treatments[unit] == Treatment::Replace)
                out = std::copy_n(entity(unit).data(), entity(unit).size(), out);
        }
    }
    return out;
}

}

/// Writes at the end of a QByteArray through a bare pointer, and settles the array's size when it is done.
class QVXmlEncoder::Tail
{
public:
    explicit Tail(QByteArray &bytes)
        : m_bytes(bytes)
    {
        bytes.detach();
        m_end = bytes.data() + bytes.size();
        m_limit = bytes.data() + bytes.capacity();
    }
    ~Tail() { m_bytes.resize(m_end - m_bytes.constData()); }
    Tail(const Tail &) = delete;
    Tail &operator=(const Tail &) = delete;

    void add(QByteArrayView text)
    {
        makeRoom(text.size());
        m_end = std::copy(text.begin(), text.end(), m_end);
    }
    void addTabs(quint64 count)
    {
        const auto tabs = std::max<qsizetype>(0, static_cast<qsizetype>(count)); // wrapped around: too many were closed
        makeRoom(tabs);
        m_end = std::fill_n(m_end, tabs, '\t');
    }
    void addNumber(qint64 number)
    {
        constexpr qsizetype maxDigits = 20;
        makeRoom(maxDigits);
        m_end = std::to_chars(m_end, m_end + maxDigits, number).ptr;
    }
    /// In slices, so that a long text does not ask for six times its room.
    void addEncoded(QStringView text)
    {
        constexpr qsizetype sliceSize = 4096;
        while (!text.isEmpty()) {
            qsizetype size = std::min(text.size(), sliceSize);
            if (size < text.size() && text[size - 1].isHighSurrogate())
                --size;
            makeRoom(size * longestEntity);
            m_end = encode(text.first(size), m_end);
            text = text.sliced(size);
        }
    }
    void addClosingTag(QByteArrayView name)
    {
        add("</");
        add(name);
        add(">\n");
    }

private:
    void makeRoom(qsizetype room)
    {
        if (m_limit - m_end >= room)
            return;
        const qsizetype size = m_end - m_bytes.constData();
        m_bytes.resize(size);
        m_bytes.reserve(std::max(size + room, 2 * m_bytes.capacity()));
        m_end = m_bytes.data() + size;
        m_limit = m_bytes.data() + m_bytes.capacity();
    }

    QByteArray &m_bytes;
    char *m_end;
    char *m_limit;
};

void QVXmlEncoder::addAttribute(QByteArrayView name, quint64 number)
{
    Tail tail(m_attributes);
    tail.add(" ");
    tail.add(name);
    tail.add("=\"");
    tail.addNumber(static_cast<qint32>(number));
    tail.add("\"");
}

void QVXmlEncoder::addAttribute(QByteArrayView name, QStringView text)
{
    if (text.isEmpty())
        return;
    Tail tail(m_attributes);
    tail.add(" ");
    tail.add(name);
    tail.add("=\"");
    tail.addEncoded(text);
    tail.add("\"");
}

/// Everything up to the content.
void QVXmlEncoder::beginTag(Tail &tail, QByteArrayView name)
{
    m_pendingChild = false;
    tail.addTabs(m_level);
    tail.add("<");
    tail.add(name);
    tail.add(m_attributes);
    tail.add(">");
    m_attributes.resize(0);
}

void QVXmlEncoder::openTag(QByteArrayView name)
{
    Tail tail(m_xml);
    beginTag(tail, name);
    tail.add("\n");
    ++m_level;
    m_pendingChild = true;
}

void QVXmlEncoder::closeTag(QByteArrayView name)
{
    --m_level;
    const bool empty = m_pendingChild && m_xml.endsWith('\n');
    m_pendingChild = false;
    if (empty)
        m_xml.chop(1);
    Tail tail(m_xml);
    if (!empty)
        tail.addTabs(m_level);
    tail.addClosingTag(name);
}

void QVXmlEncoder::openAndCloseTag(QByteArrayView name)
{
    Tail tail(m_xml);
    beginTag(tail, name);
    tail.addClosingTag(name);
}

void QVXmlEncoder::addTag(QByteArrayView name, quint64 number)
{
    addTagWithLongNumber(name, static_cast<qint32>(number));
}

void QVXmlEncoder::addTagWithLongNumber(QByteArrayView name, qint64 number)
{
    Tail tail(m_xml);
    beginTag(tail, name);
    tail.addNumber(number);
    tail.addClosingTag(name);
}

void QVXmlEncoder::addTag(QByteArrayView name, QStringView text)
{
    if (text.isNull()) {
        openTag(name);
        m_pendingChild = false;
        return;
    }
    Tail tail(m_xml);
    beginTag(tail, name);
    tail.addEncoded(text);
    tail.addClosingTag(name);
}

void QVXmlEncoder::saveInsertionPoint()
{
    m_insertLevel = m_level;
    m_insertPosition = static_cast<quint64>(m_xml.size());
}

void QVXmlEncoder::beginInsertion()
{
    if (m_savedLevel != kNotFound || m_insertPosition == kNotFound)
        return;
    const auto position = static_cast<qsizetype>(m_insertPosition);
    if (position < m_xml.size()) {
        m_savedTail = m_xml.sliced(position);
        m_xml.truncate(position);
    }
    m_savedLevel = m_level;
    m_level = m_insertLevel;
}

void QVXmlEncoder::endInsertion()
{
    if (m_savedLevel == kNotFound)
        return;
    m_level = m_savedLevel;
    m_savedLevel = kNotFound;
    if (m_savedTail)
        m_xml += *m_savedTail;
    m_savedTail.reset();
}

QString QVXmlEncoder::createEncodedValue(QStringView text)
{
    QByteArray encoded;
    Tail(encoded).addEncoded(text);
    return QString::fromUtf8(encoded);
}
