#include "iconfamily/ForkStore.h"

namespace quilo {

ForkStore& forkStore() { return platformForkStore(); }

} // namespace quilo
