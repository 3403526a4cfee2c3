#pragma once

#include "ByteSource.h"
#include "JpegMarkers.h"

#include <QRgb>
#include <QSize>
#include <QString>

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

#include <memory>
#include <vector>

/// libjpeg's decompressor over a ByteSource, without its habit of ending the process. Rows come out as QRgb.
class JpegReader
{
public:
    explicit JpegReader(const ByteSource &source);
    ~JpegReader();
    JpegReader(const JpegReader &) = delete;
    JpegReader &operator=(const JpegReader &) = delete;

    /// Reads up to the pixels and prepares them at `eighths` of their size. Progressive files are read whole here.
    /// False as well when the header is not the one that was `told`, by which the file was admitted.
    [[nodiscard]] bool start(int eighths, const JpegMarkers &told);
    /// The size of the rows that come, once started.
    [[nodiscard]] QSize size() const;
    /// The next row; null after an error, or when cancelled.
    [[nodiscard]] const QRgb *nextRow();

    /// Data was missing or broken, and was made up for as well as possible.
    [[nodiscard]] bool isDamaged() const { return m_damaged; }
    [[nodiscard]] const QString &failure() const { return m_failure; }

private:
    bool guarded(void (*step)(JpegReader &));
    static JpegReader &self(j_common_ptr info);
    static void failed(j_common_ptr info);
    static void warned(j_common_ptr info, int level);
    static void progressed(j_common_ptr info);
    static boolean fillBuffer(j_decompress_ptr info);
    static void skipBytes(j_decompress_ptr info, long count);

    static constexpr int kBufferSize = 64 * 1024;

    const ByteSource &m_source;
    qint64 m_position = 0; // of what follows the buffer
    bool m_damaged = false;
    QString m_failure;
    std::unique_ptr<JOCTET[]> m_buffer = std::make_unique_for_overwrite<JOCTET[]>(kBufferSize);
    std::vector<QRgb> m_row;
    JSAMPROW m_rowPointer = nullptr;
    bool m_gotRow = false;

    jpeg_decompress_struct m_info = {};
    jpeg_error_mgr m_errors = {};
    jpeg_source_mgr m_manager = {};
    jpeg_progress_mgr m_progress = {};
    std::jmp_buf m_jump = {};
};
