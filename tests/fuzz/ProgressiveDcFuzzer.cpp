// libFuzzer's entry point for the progressive JPEG decoder.
#include "tests/fuzz/ProgressiveDcTarget.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quilo::fuzz::readProgressiveDcBytes({data, size});
    return 0;
}
