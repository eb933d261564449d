#pragma once

#include <cstdint>
#include <span>

namespace quilo::fuzz {

// Runs every reading path of the engine, and a write on top, over `bytes`
// taken as an .icns file. Aborts with a message when a path breaks one of the
// engine's promises; memory errors are left to the sanitizers.
void readIcnsBytes(std::span<const std::uint8_t> bytes);

} // namespace quilo::fuzz
