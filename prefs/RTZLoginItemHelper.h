#pragma once

namespace quilo {

// Quilo among the programs the session starts at login. An item is Quilo's
// when the last component of its "Path" equals, case and all, that of the
// running program's path ("quilo"): folders are not compared, so a copy
// elsewhere or a moved Quilo counts as this one and is found and removed.
// Each call reads the list afresh; main thread only, with an application
// object alive.
class RTZLoginItemHelper {
public:
    // True when some item of the list is Quilo's; false for no list or an
    // empty one.
    static bool isSelfInLoginItems();
    // Appends an item for the running program without looking for one
    // already there: "Path" its path, "Hide" the flag, "AliasData" an alias
    // record of it.
    static void addSelfToLoginItems(bool hide);
    // Removes every item that is Quilo's; the others stay, in their order.
    static void removeSelfFromLoginItems();
};

} // namespace quilo
