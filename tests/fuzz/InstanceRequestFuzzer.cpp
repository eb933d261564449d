// libFuzzer's entry point for the messages to the running instance.
#include "tests/fuzz/InstanceRequestTarget.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quilo::fuzz::readInstanceBytes({data, size});
    return 0;
}
