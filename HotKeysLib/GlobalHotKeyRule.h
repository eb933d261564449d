#pragma once
// Which combinations may be taken from every program of the session. Header
// only: the panel that captures combinations and the registrars that grab them
// sit in libraries that do not link each other.
#include "HotKeysLib/KeyCombo.h"
#include "foundation/Log.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quilo {

// F1 to F19 by Mac key code: no program needs them plain.
inline constexpr std::array<std::int32_t, 19> kFunctionKeyCodes{122, 120, 99, 118, 96, 97, 98, 100, 101, 109,
                                                                103, 111, 105, 107, 113, 106, 64, 79, 80};

// A combination holds Super (cmdKey), Alt (optionKey) or Control, or its key
// is a function key. A plain key grabbed would reach no program but Quilo:
// Return would start a job in every window.
inline bool mayBeGlobalHotKey(std::int32_t keyCode, std::int32_t modifiers)
{
    if (keyCode < 0 || modifiers < 0)
        return false;
    return (modifiers & (cmdKey | optionKey | controlKey)) != 0
        || std::find(kFunctionKeyCodes.begin(), kFunctionKeyCodes.end(), keyCode) != kFunctionKeyCodes.end();
}

// For a registrar: true, with a log line, when a combination is refused for
// want of a modifier. One that names no combination is the registrar's to refuse.
inline bool refusedAsPlainKey(std::int32_t keyCode, std::int32_t modifiers)
{
    if (keyCode < 0 || modifiers < 0 || mayBeGlobalHotKey(keyCode, modifiers))
        return false;
    logFormat("Hot key %d with modifiers 0x%04X refused: without Super, Alt or Control it would be taken from "
              "every program of the session",
              int(keyCode), unsigned(modifiers));
    return true;
}

} // namespace quilo
