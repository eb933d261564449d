#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>

namespace quilo {

// Which of X's modifier bits stand for Super, Alt and Num Lock on this
// server. Desktops and keyboard layouts move them between Mod1 and Mod5, so
// they are read from the server's modifier mapping rather than assumed. A
// zero mask is a modifier the server's keyboard lacks.
struct X11ModifierMasks {
    std::uint16_t super = 0;
    std::uint16_t alt = 0;
    std::uint16_t numLock = 0;

    // The X mask of Carbon modifier bits (command as Super, option as Alt);
    // nullopt when one of them has no X modifier here. Other bits are ignored.
    std::optional<std::uint16_t> maskForCarbonModifiers(std::int32_t carbonModifiers) const;
    // The bits a hot key is told apart by: Num Lock, Caps Lock and the
    // rest do not count.
    std::uint16_t significant() const;

    bool operator==(const X11ModifierMasks&) const = default;
};

// Asks the server; all masks zero when it does not answer.
X11ModifierMasks readModifierMasks(xcb_connection_t* connection);

} // namespace quilo
