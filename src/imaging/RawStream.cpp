#include "RawStream.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

int RawStream::read(void *to, size_t size, size_t count)
{
    if (size == 0)
        return 0;
    // Much of a raw header is read two or four bytes at a time.
    const qint64 wanted = qint64(std::min<quint64>(quint64(size) * count, quint64(m_source.size())));
    const qint64 inWindow = m_position - m_windowStart;
    qint64 got = 0;
    if (inWindow >= 0 && inWindow + wanted <= m_window.size()) {
        std::memcpy(to, m_window.constData() + inWindow, size_t(wanted));
        got = wanted;
    } else {
        got = m_source.read(m_position, to, wanted);
    }
    m_position += got;
    return int(got / qint64(size));
}

int RawStream::seek(INT64 offset, int whence)
{
    const qint64 base = whence == SEEK_CUR ? m_position : whence == SEEK_END ? m_source.size() : 0;
    m_position = std::clamp(base + offset, qint64(0), m_source.size());
    return 0;
}

int RawStream::get_char()
{
    constexpr qint64 windowSize = 4096;
    if (m_position < m_windowStart || m_position >= m_windowStart + m_window.size()) {
        m_window = m_source.bytes(m_position, windowSize);
        m_windowStart = m_position;
    }
    if (m_window.isEmpty())
        return EOF;
    return uchar(m_window.at(m_position++ - m_windowStart));
}

char *RawStream::gets(char *to, int size)
{
    int length = 0;
    while (length < size - 1) {
        const int byte = get_char();
        if (byte == EOF)
            break;
        to[length++] = char(byte);
        if (byte == '\n')
            break;
    }
    if (size > 0)
        to[length] = 0;
    return length > 0 ? to : nullptr;
}

int RawStream::scanf_one(const char *format, void *value)
{
    constexpr int longestNumber = 24;
    QByteArray word;
    for (int byte = get_char(); byte != EOF && word.size() < longestNumber; byte = get_char()) {
        const bool isSpace = byte == 0 || byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
        if (isSpace && !word.isEmpty())
            break;
        if (!isSpace)
            word += char(byte);
    }
    // LibRaw asks for one int or one float this way, in the text headers of a few old cameras.
    if (std::strcmp(format, "%d") == 0) {
        *static_cast<int *>(value) = word.toInt();
        return 1;
    }
    if (std::strcmp(format, "%f") == 0) {
        *static_cast<float *>(value) = word.toFloat();
        return 1;
    }
    return 0;
}
