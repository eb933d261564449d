#pragma once

#include <cstdint>
#include <span>

namespace quilo::fuzz {

// Parses `bytes` as a resource fork and, when they parse, writes them back, edits
// them and reads them again. Aborts with a message when a promise of the
// codec breaks; memory errors are left to the sanitizers.
void readResourceForkBytes(std::span<const std::uint8_t> bytes);

} // namespace quilo::fuzz
