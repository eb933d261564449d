#pragma once

#include <cstdint>
#include <span>

namespace quilo::fuzz {

// Reads `bytes` as a peer's message to the running instance, and as a stream
// of frames each holding one. Aborts with a message when a promise of the
// reader breaks; memory errors are left to the sanitizers.
void readInstanceBytes(std::span<const std::uint8_t> bytes);

} // namespace quilo::fuzz
