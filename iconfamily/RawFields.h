#pragma once

#include "foundation/FourCharCode.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

// Big-endian fields of on-disk layouts declared as structs of byte arrays, so
// the structs have no padding and any alignment.
namespace quilo::raw {

inline std::uint32_t be16(const std::uint8_t (&b)[2]) { return std::uint32_t(b[0]) << 8 | b[1]; }
inline std::uint32_t be24(const std::uint8_t (&b)[3])
{
    return std::uint32_t(b[0]) << 16 | std::uint32_t(b[1]) << 8 | b[2];
}
inline std::uint32_t be32(const std::uint8_t (&b)[4]) { return readFourCharCode(b); }

inline void put16(std::uint8_t (&b)[2], std::size_t v)
{
    b[0] = std::uint8_t(v >> 8);
    b[1] = std::uint8_t(v);
}
inline void put24(std::uint8_t (&b)[3], std::size_t v)
{
    b[0] = std::uint8_t(v >> 16);
    b[1] = std::uint8_t(v >> 8);
    b[2] = std::uint8_t(v);
}
inline void put32(std::uint8_t (&b)[4], std::size_t v) { writeFourCharCode(b, OSType(v)); }

// A layout struct copied out of `bytes`; callers have checked that sizeof(T)
// bytes are there.
template <typename T>
T readRaw(std::span<const std::uint8_t> bytes, std::size_t offset)
{
    T raw;
    std::memcpy(&raw, bytes.data() + offset, sizeof(T));
    return raw;
}

} // namespace quilo::raw
