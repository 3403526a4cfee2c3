#pragma once

#include "ByteSource.h"

#include <libraw/libraw.h>

/// Lets LibRaw read from a ByteSource.
class RawStream final : public LibRaw_abstract_datastream
{
public:
    explicit RawStream(const ByteSource &source)
        : m_source(source)
    {}

    int valid() override { return 1; }
    int read(void *to, size_t size, size_t count) override;
    int seek(INT64 offset, int whence) override;
    INT64 tell() override { return m_position; }
    INT64 size() override { return m_source.size(); }
    int get_char() override;
    char *gets(char *to, int size) override;
    int scanf_one(const char *format, void *value) override;
    int eof() override { return m_position >= m_source.size(); }
    void *make_jas_stream() override { return nullptr; }

private:
    const ByteSource &m_source;
    qint64 m_position = 0;
    QByteArray m_window;
    qint64 m_windowStart = 0;
};
