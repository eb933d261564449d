#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace quilo {

// The key at a Mac virtual key code's position, named as XKB names the symbol
// that key types on a US keyboard ("t", "space", "F1"). None for codes that
// name no key and for the modifier keys, which cannot be a shortcut's key.
std::optional<QString> keySymbolNameForMacKeyCode(std::int32_t macKeyCode);

// A combination in the desktop portal's shortcut-trigger syntax: the modifiers
// in command, option, control, shift order as LOGO, ALT, CTRL and SHIFT, then
// the key, joined by '+' ("LOGO+SHIFT+t"). Modifier bits other than Carbon's
// four are ignored. None when the key has no name or modifiers is negative.
std::optional<QString> portalTriggerForCombination(std::int32_t keyCode, std::int32_t modifiers);

} // namespace quilo
