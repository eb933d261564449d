// libFuzzer's entry point for the .icns reader.
#include "tests/fuzz/IcnsReaderTarget.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quilo::fuzz::readIcnsBytes({data, size});
    return 0;
}
