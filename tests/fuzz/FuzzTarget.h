#pragma once

#include <cstdint>
#include <span>

namespace quilo::fuzz {

// The one entry of a fuzz target: reads `bytes` as its parser's input and
// checks the parser's promises, aborting with a message when one breaks
// (memory errors are left to the sanitizers). Each target library defines
// it; libFuzzer's main (FuzzerMain.cpp) and the regular build's replay of
// saved inputs (ReplayInputs.cpp) call it.
void fuzzInput(std::span<const std::uint8_t> bytes);

} // namespace quilo::fuzz
