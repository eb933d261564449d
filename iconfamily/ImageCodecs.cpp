#include "iconfamily/ImageCodecs.h"

#include "foundation/Log.h"

#include <dlfcn.h>
#include <mutex>

namespace quilo {

const ImageCodecs* imageCodecs()
{
    static std::once_flag loaded;
    static const ImageCodecs* codecs = nullptr;
    std::call_once(loaded, [] {
        // Found through the program's run path: beside the build's libraries,
        // or in lib/quilo of the installation.
        void* module = ::dlopen("libquilo_vips.so", RTLD_NOW | RTLD_LOCAL);
        if (!module) {
            logFormat("Cannot load the image library module: %s", ::dlerror());
            return;
        }
        using EntryPoint = const ImageCodecs* (*)();
        if (auto entry = reinterpret_cast<EntryPoint>(::dlsym(module, "quiloImageCodecs")))
            codecs = entry();
    });
    return codecs;
}

} // namespace quilo
