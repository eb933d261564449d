// libFuzzer's entry point for the resource fork codec.
#include "tests/fuzz/ResourceForkTarget.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quilo::fuzz::readResourceForkBytes({data, size});
    return 0;
}
