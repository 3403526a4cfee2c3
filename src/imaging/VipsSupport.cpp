#include "VipsSupport.h"

#include <mutex>

void ensureVips()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // Its warnings about broken files would repeat with every decoding; what matters comes back as a result.
        g_log_set_handler(
            "VIPS", GLogLevelFlags(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_INFO | G_LOG_LEVEL_DEBUG),
            [](const gchar *, GLogLevelFlags, const gchar *, gpointer) {}, nullptr);
        if (VIPS_INIT("tamsel-photo") != 0)
            return;
        vips_block_untrusted_set(TRUE);
        vips_operation_block_set("VipsForeignLoadJxl", FALSE);
        vips_cache_set_max(0);
        vips_concurrency_set(1); // many pictures are made side by side instead
    });
}

QString takeVipsError()
{
    char *text = vips_error_buffer_copy();
    const QString error = QString::fromUtf8(text).simplified();
    g_free(text);
    return error;
}
