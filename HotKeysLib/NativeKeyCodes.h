#pragma once
#include <cstdint>
#include <optional>

namespace quilo {

// Quilo stores Mac virtual key codes (17 is T); the platform names keys by
// its own codes (X11 keycodes on Linux). Both are positions on the keyboard,
// so a stored combination means the same physical keys on any layout.
std::optional<std::uint32_t> nativeKeyCodeForMacKeyCode(std::int32_t macKeyCode);
std::optional<std::int16_t> macKeyCodeForNativeKeyCode(std::uint32_t nativeKeyCode);

} // namespace quilo
