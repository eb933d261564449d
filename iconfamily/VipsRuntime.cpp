#include "iconfamily/VipsRuntime.h"

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
    });
    return ok;
}

} // namespace quilo
