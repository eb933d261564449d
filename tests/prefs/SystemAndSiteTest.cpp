// The system's version in the Gestalt form, and the maker's web site.
#include "prefs/MakersWebSite.h"
#include "prefs/RTZMacOSVersion.h"

#include <gtest/gtest.h>

#include <tuple>

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

// Pages are fetched or opened over HTTPS unless the build allowed plain
// HTTP; a build that names no site has no pages at all.
TEST(MakersWebSite, PagesOnlyOnASiteTheBuildMayUse)
{
    const std::tuple<const char*, bool, const char*> sites[] = {
        {"", true, ""},
        {"https://quilo.example:8443/old/", false, "https://quilo.example:8443/appversions.xml"},
        {"http://quilo.example", false, ""},
        {"http://127.0.0.1:8080", true, "http://127.0.0.1:8080/appversions.xml"},
        {"ftp://quilo.example", true, ""},
        {"https://", false, ""},
    };
    for (const auto& [site, httpAllowed, page] : sites)
        EXPECT_EQ(pageOnMakersSite(site, "/appversions.xml", httpAllowed), QUrl(page)) << site;
    EXPECT_EQ(donationPageURL().path(), updateDocumentURL().isEmpty() ? "" : "/register/");
    EXPECT_TRUE(updateDocumentURL().isEmpty() || updateDocumentURL().scheme() == "https" || QUILO_ALLOW_HTTP_UPDATES)
        << "this build's own site";
}

} // namespace
} // namespace quilo
