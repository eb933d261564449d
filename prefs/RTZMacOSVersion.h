#pragma once

#include <cstdint>
#include <string_view>

namespace quilo {

// The running system's version in the binary-coded decimal form the Mac's
// Gestalt 'sysv' answer has: two digits of major version, one of minor, one
// of bug fix (10.4.9 is 0x1049). Nothing in Quilo asks for it yet.
class RTZMacOSVersion {
public:
    // Here the kernel's release stands for the system's version: 6.1.0 is
    // 0x0610. 0 when it cannot be read.
    static std::int32_t systemVersionNumber();

    // The form for a release text such as "6.1.0-18-amd64": leading numbers
    // separated by dots, the rest ignored; a missing minor or bug-fix number
    // is 0, and each number is held at what its digits can show (99, 9, 9),
    // so 5.15.2 is 0x0592. 0 for a text that does not begin with a number.
    static std::int32_t versionNumberFromRelease(std::string_view release);
};

} // namespace quilo
