// The system's version in the Gestalt form.
#include "prefs/RTZMacOSVersion.h"

#include <gtest/gtest.h>

#include <sys/utsname.h>

namespace quilo {
namespace {

TEST(RTZMacOSVersion, ReleasesInBinaryCodedDecimal)
{
    const struct {
        const char* release;
        std::int32_t number;
    } releases[] = {
        {"10.4.9", 0x1049},   {"6.1.0-18-amd64", 0x0610}, {"6.1", 0x0610},   {"6", 0x0600},
        {"5.15.167", 0x0599}, {"4.19.0-cloud", 0x0490},   {"123.4.5", 0x9945}, {"6.1.x", 0x0610},
        {"6..2", 0x0600},     {"", 0},                    {"v6.1", 0},        {"-1.2", 0},
        {"99999999999999999999.1.1", 0x9911},
    };
    for (const auto& release : releases)
        EXPECT_EQ(RTZMacOSVersion::versionNumberFromRelease(release.release), release.number) << release.release;
}

} // namespace
} // namespace quilo
