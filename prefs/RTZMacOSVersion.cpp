#include "prefs/RTZMacOSVersion.h"

#include <algorithm>
#include <array>
#include <sys/utsname.h>

namespace quilo {
namespace {

constexpr std::int32_t bcd(int value) { return std::int32_t((value / 10) << 4 | value % 10); }

// Reads the number at `at` and moves past it; nothing read is -1.
int readNumber(std::string_view text, std::size_t& at)
{
    int value = -1;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9') {
        value = std::min(std::max(value, 0) * 10 + (text[at] - '0'), 1000);
        ++at;
    }
    return value;
}

} // namespace

std::int32_t RTZMacOSVersion::versionNumberFromRelease(std::string_view release)
{
    constexpr std::array<int, 3> largest{99, 9, 9};
    std::array<int, 3> fields{0, 0, 0};
    std::size_t at = 0;
    for (std::size_t field = 0; field < fields.size(); ++field) {
        if (field > 0 && (at >= release.size() || release[at++] != '.'))
            break;
        const int number = readNumber(release, at);
        if (number < 0) {
            if (field == 0)
                return 0;
            break;
        }
        fields[field] = std::min(number, largest[field]);
    }
    return bcd(fields[0]) << 8 | bcd(fields[1]) << 4 | bcd(fields[2]);
}

std::int32_t RTZMacOSVersion::systemVersionNumber()
{
    utsname system{};
    if (::uname(&system) != 0)
        return 0;
    return versionNumberFromRelease(system.release);
}

} // namespace quilo
