#pragma once

#include <cstdint>
#include <string>

namespace quilo {

// A four-character code: four ASCII bytes, the first one most significant.
using OSType = std::uint32_t;

constexpr OSType fourCharCode(const char (&code)[5])
{
    return (OSType(std::uint8_t(code[0])) << 24) | (OSType(std::uint8_t(code[1])) << 16)
        | (OSType(std::uint8_t(code[2])) << 8) | OSType(std::uint8_t(code[3]));
}

// The four characters as they are, for codes made of printable ASCII;
// otherwise "0x" and eight hexadecimal digits, so untrusted codes print safely.
std::string fourCharCodeString(OSType code);

// Reads a big-endian code from the first four bytes at `bytes`.
inline OSType readFourCharCode(const std::uint8_t* bytes)
{
    return (OSType(bytes[0]) << 24) | (OSType(bytes[1]) << 16) | (OSType(bytes[2]) << 8)
        | OSType(bytes[3]);
}

inline void writeFourCharCode(std::uint8_t* bytes, OSType code)
{
    bytes[0] = std::uint8_t(code >> 24);
    bytes[1] = std::uint8_t(code >> 16);
    bytes[2] = std::uint8_t(code >> 8);
    bytes[3] = std::uint8_t(code);
}

constexpr OSType kUnknownFourCharCode = fourCharCode("????");

} // namespace quilo
