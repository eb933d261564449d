// libFuzzer's entry point for the AppleDouble sidecar codec.
#include "tests/fuzz/AppleDoubleTarget.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quilo::fuzz::readAppleDoubleBytes({data, size});
    return 0;
}
