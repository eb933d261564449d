#pragma once

#include <cstdint>
#include <span>

namespace quilo::fuzz {

// Decodes `bytes` as a progressive JPEG from its DC scans, from memory and
// through the chunked file reader. Aborts with a message when a promise of
// the decoder breaks; memory errors are left to the sanitizers.
void readProgressiveDcBytes(std::span<const std::uint8_t> bytes);

} // namespace quilo::fuzz
