// libFuzzer's entry point, for whichever target it is linked with.
#include "tests/fuzz/FuzzTarget.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quilo::fuzz::fuzzInput({data, size});
    return 0;
}
