#include "JpegReader.h"

#include "MemoryShare.h"

#include <jerror.h>

#include <algorithm>

#include <QtEndian>

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "QRgb in memory is blue, green, red, alpha");

// What libjpeg asks for besides the coefficients.
static constexpr long kWorkBytes = 64L << 20;
// Every scan is a pass over the whole picture: files with thousands of them are made to keep decoders busy.
static constexpr int kMaxScans = 200;

JpegReader::JpegReader(const ByteSource &source)
    : m_source(source)
{
    m_info.err = jpeg_std_error(&m_errors);
    m_errors.error_exit = failed;
    m_errors.emit_message = warned;
    m_errors.output_message = [](j_common_ptr) {};
    m_info.client_data = this;
    if (!guarded([](JpegReader &r) { jpeg_create_decompress(&r.m_info); }))
        return;
    m_manager.init_source = [](j_decompress_ptr) {};
    m_manager.term_source = [](j_decompress_ptr) {};
    m_manager.fill_input_buffer = fillBuffer;
    m_manager.skip_input_data = skipBytes;
    m_manager.resync_to_restart = jpeg_resync_to_restart;
    m_progress.progress_monitor = progressed;
    m_info.src = &m_manager;
    m_info.progress = &m_progress;
    m_info.mem->max_memory_to_use = MemoryShare::mostBytes() + kWorkBytes;
}

JpegReader::~JpegReader()
{
    jpeg_destroy_decompress(&m_info);
}

bool JpegReader::guarded(void (*step)(JpegReader &))
{
    if (setjmp(m_jump)) // the steps hold nothing that a jump over them would leak
        return false;
    step(*this);
    return true;
}

bool JpegReader::start(int eighths, const JpegMarkers &told)
{
    if (!m_failure.isEmpty() || !guarded([](JpegReader &r) { jpeg_read_header(&r.m_info, TRUE); }))
        return false;
    // What the library read is what it will make room for.
    if (QSize(int(m_info.image_width), int(m_info.image_height)) != told.size ||
        m_info.num_components != told.components || (m_info.progressive_mode != 0) != told.isProgressive) {
        m_failure = QStringLiteral("The JPEG header contradicts itself");
        return false;
    }
    m_info.out_color_space = JCS_EXT_BGRA;
    m_info.scale_num = unsigned(eighths);
    m_info.scale_denom = 8;
    const bool started = guarded([](JpegReader &r) { jpeg_start_decompress(&r.m_info); });
    if (started)
        m_row.resize(m_info.output_width);
    m_rowPointer = reinterpret_cast<JSAMPROW>(m_row.data());
    return started;
}

QSize JpegReader::size() const
{
    return {int(m_info.output_width), int(m_info.output_height)};
}

const QRgb *JpegReader::nextRow()
{
    m_gotRow = false;
    if (m_info.output_scanline >= m_info.output_height || m_source.isCancelled())
        return nullptr;
    const bool ok =
        guarded([](JpegReader &r) { r.m_gotRow = jpeg_read_scanlines(&r.m_info, &r.m_rowPointer, 1) == 1; });
    return ok && m_gotRow ? m_row.data() : nullptr;
}

JpegReader &JpegReader::self(j_common_ptr info)
{
    return *static_cast<JpegReader *>(info->client_data);
}

void JpegReader::failed(j_common_ptr info)
{
    JpegReader &reader = self(info);
    {
        char text[JMSG_LENGTH_MAX] = {};
        info->err->format_message(info, text);
        reader.m_failure = QString::fromLatin1(text);
    }
    std::longjmp(reader.m_jump, 1);
}

void JpegReader::warned(j_common_ptr info, int level)
{
    if (level >= 0)
        return;
    switch (info->err->msg_code) {
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_JPEG_EOF:
    case JWRN_MUST_RESYNC:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_BOGUS_PROGRESSION:
    case JWRN_TOO_MUCH_DATA:
        self(info).m_damaged = true;
        break;
    default: // padding between segments and other peculiarities cost no pixel
        break;
    }
}

void JpegReader::progressed(j_common_ptr info)
{
    const JpegReader &reader = self(info);
    if (reader.m_source.isCancelled() || (info->is_decompressor && reader.m_info.input_scan_number > kMaxScans))
        failed(info);
}

boolean JpegReader::fillBuffer(j_decompress_ptr info)
{
    JpegReader &reader = self(reinterpret_cast<j_common_ptr>(info));
    const qint64 got = reader.m_source.read(reader.m_position, reader.m_buffer.get(), kBufferSize);
    reader.m_position += got;
    reader.m_manager.next_input_byte = reader.m_buffer.get();
    reader.m_manager.bytes_in_buffer = size_t(got);
    if (got <= 0) { // pretend that the picture ends here
        if (reader.m_source.isCancelled())
            failed(reinterpret_cast<j_common_ptr>(info));
        WARNMS(info, JWRN_JPEG_EOF);
        reader.m_buffer[0] = 0xff;
        reader.m_buffer[1] = JPEG_EOI;
        reader.m_manager.bytes_in_buffer = 2;
    }
    return TRUE;
}

void JpegReader::skipBytes(j_decompress_ptr info, long count)
{
    JpegReader &reader = self(reinterpret_cast<j_common_ptr>(info));
    if (count <= 0)
        return;
    const auto inBuffer = std::min(long(reader.m_manager.bytes_in_buffer), count);
    reader.m_manager.next_input_byte += inBuffer;
    reader.m_manager.bytes_in_buffer -= size_t(inBuffer);
    reader.m_position = std::min(reader.m_position + count - inBuffer, reader.m_source.size());
}
