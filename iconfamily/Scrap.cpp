#include "iconfamily/Scrap.h"

#include <atomic>

namespace quilo {
namespace {

std::atomic<Scrap*> replacement{nullptr};

} // namespace

Scrap& currentScrap()
{
    Scrap* scrap = replacement.load();
    return scrap ? *scrap : platformScrap();
}

void replaceScrap(Scrap* scrap) { replacement.store(scrap); }

} // namespace quilo
