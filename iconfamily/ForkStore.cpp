#include "iconfamily/ForkStore.h"

#include <atomic>

namespace quilo {
namespace {

std::atomic<ForkStore*> replacement{nullptr};

} // namespace

ForkStore& forkStore()
{
    ForkStore* store = replacement.load();
    return store ? *store : platformForkStore();
}

void replaceForkStore(ForkStore* store) { replacement.store(store); }

} // namespace quilo
