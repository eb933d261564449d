#include "iconfamily/vips/VipsRuntime.h"

#include <mutex>
#include <vips/vips.h>

namespace quilo {

bool ensureVipsStarted()
{
    static std::once_flag started;
    static bool ok = false;
    std::call_once(started, [] {
        ok = vips_init("quilo") == 0;
        // Each picture is decoded once; an operation cache would only hold memory.
        vips_cache_set_max(0);
        // Quilo runs pictures side by side on its own threads; the library's
        // threads within one small decode would only compete with them.
        vips_concurrency_set(1);
        // A damaged picture is reported by its failed decode; the library's own
        // warnings about it would only clutter the terminal.
        g_log_set_handler("VIPS", G_LOG_LEVEL_WARNING, [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {},
                          nullptr);
    });
    return ok;
}

} // namespace quilo
