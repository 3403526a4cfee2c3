#include "ImageEncoders.h"

#include <QPainter>

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace {

/// libjpeg's compressor into memory, without its habit of ending the process.
class JpegWriter
{
public:
    JpegWriter(const QImage &pixels, int quality, ImageEncoders::Chroma chroma, const QByteArray &profile,
               const QByteArray &exif)
        : m_pixels(pixels)
        , m_quality(quality)
        , m_chroma(chroma)
        , m_profile(profile)
        , m_exif(exif)
    {
        m_info.err = jpeg_std_error(&m_errors);
        m_info.client_data = this;
        m_errors.error_exit = [](j_common_ptr info) {
            std::longjmp(static_cast<JpegWriter *>(info->client_data)->m_jump, 1);
        };
        m_errors.output_message = [](j_common_ptr) {};
    }
    ~JpegWriter()
    {
        jpeg_destroy_compress(&m_info);
        std::free(m_bytes);
    }
    JpegWriter(const JpegWriter &) = delete;
    JpegWriter &operator=(const JpegWriter &) = delete;

    bool run()
    {
        if (setjmp(m_jump)) // nothing below holds what a jump over it would leak
            return false;
        start();
        while (m_info.next_scanline < m_info.image_height) {
            JSAMPROW row = const_cast<JSAMPROW>(m_pixels.constScanLine(int(m_info.next_scanline)));
            jpeg_write_scanlines(&m_info, &row, 1);
        }
        jpeg_finish_compress(&m_info);
        return true;
    }
    QByteArray bytes() const { return QByteArray(reinterpret_cast<const char *>(m_bytes), qsizetype(m_size)); }

private:
    void start()
    {
        jpeg_create_compress(&m_info);
        jpeg_mem_dest(&m_info, &m_bytes, &m_size);
        m_info.image_width = unsigned(m_pixels.width());
        m_info.image_height = unsigned(m_pixels.height());
        m_info.input_components = 4;
        m_info.in_color_space = JCS_EXT_BGRX;
        jpeg_set_defaults(&m_info);
        jpeg_set_quality(&m_info, m_quality, TRUE);
        if (m_chroma == ImageEncoders::Chroma::Full)
            m_info.comp_info[0].h_samp_factor = m_info.comp_info[0].v_samp_factor = 1;
        jpeg_start_compress(&m_info, TRUE);
        constexpr qsizetype longestSegment = 65533;
        if (!m_exif.isEmpty() && m_exif.size() <= longestSegment)
            jpeg_write_marker(&m_info, JPEG_APP0 + 1, reinterpret_cast<const JOCTET *>(m_exif.constData()),
                              unsigned(m_exif.size()));
        if (!m_profile.isEmpty())
            jpeg_write_icc_profile(&m_info, reinterpret_cast<const JOCTET *>(m_profile.constData()),
                                   unsigned(m_profile.size()));
    }

    const QImage &m_pixels;
    int m_quality;
    ImageEncoders::Chroma m_chroma;
    const QByteArray &m_profile;
    const QByteArray &m_exif;
    unsigned char *m_bytes = nullptr;
    unsigned long m_size = 0;
    jpeg_compress_struct m_info = {};
    jpeg_error_mgr m_errors = {};
    std::jmp_buf m_jump = {};
};

QImage onWhite(const QImage &pixels)
{
    if (!pixels.hasAlphaChannel())
        return pixels.convertToFormat(QImage::Format_RGB32);
    QImage opaque(pixels.size(), QImage::Format_RGB32);
    opaque.fill(Qt::white);
    QPainter(&opaque).drawImage(0, 0, pixels);
    return opaque;
}

}

QByteArray ImageEncoders::jpeg(const QImage &pixels, int quality, Chroma chroma, const QByteArray &profile,
                               const PictureNotes &notes)
{
    const QImage opaque = onWhite(pixels);
    if (opaque.isNull())
        return {};
    const QByteArray exif = notes.exif();
    JpegWriter writer(opaque, quality, chroma, profile, exif);
    return writer.run() ? writer.bytes() : QByteArray();
}
