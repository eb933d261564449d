// The engine's platform services on Linux.
#include "iconfamily/ChangeNotifier.h"
#include "iconfamily/ForkStore.h"
#include "platform/linux/LinuxChangeNotifier.h"
#include "platform/linux/SidecarForkStore.h"

namespace quilo {

ForkStore& forkStore()
{
    static SidecarForkStore store;
    return store;
}

ChangeNotifier& changeNotifier()
{
    static LinuxChangeNotifier notifier;
    return notifier;
}

} // namespace quilo
