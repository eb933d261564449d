// Where the session's instance listens: one name per session, and only in a
// folder nobody else can enter.
#include "app/InstanceAddress.h"
#include "tests/support/InstanceServing.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace quilo {
namespace {

namespace fs = std::filesystem;
using namespace test;

class InstanceAddressTest : public ::testing::Test {
protected:
    QString uidName(const char* session) const { return QStringLiteral("quilo-%1-%2").arg(::getuid()).arg(session); }

    TemporaryDirectory runtime_;
    TemporaryDirectory temporary_;
    TemporaryDirectory cache_;
    ScopedEnvironment cacheVariable_{"XDG_CACHE_HOME", cache_.path().string()};
    ScopedEnvironment runtimeVariable_{"XDG_RUNTIME_DIR", runtime_.path().string()};
    ScopedEnvironment temporaryVariable_{"TMPDIR", temporary_.path().string()};
    ScopedEnvironment session_{"XDG_SESSION_ID", std::nullopt};
    ScopedEnvironment display_{"DISPLAY", ":0"};
    ScopedEnvironment wayland_{"WAYLAND_DISPLAY", "wayland-0"};
};

TEST_F(InstanceAddressTest, TheSessionIsTheLoginSessionElseTheDisplay)
{
    EXPECT_EQ(sessionKey(), "display-:0");
    ::setenv("XDG_SESSION_ID", "c2", 1);
    EXPECT_EQ(sessionKey(), "session-c2");
    ::unsetenv("XDG_SESSION_ID");
    ::unsetenv("DISPLAY");
    EXPECT_EQ(sessionKey(), "wayland-wayland-0");
    ::unsetenv("WAYLAND_DISPLAY");
    EXPECT_EQ(sessionKey(), "nosession");

    // Each value its own short file name, whatever it holds.
    std::set<QString> keys;
    for (const char* display : {":0", "_0", "%3a0", "a/b", "a\nb", "../x", "-", "=", "localhost:10.0",
                                "a-very-long-display-name-that-no-socket-path-could-hold:0", ""})
        if (*display) {
            ::setenv("DISPLAY", display, 1);
            const QString key = sessionKey();
            EXPECT_TRUE(keys.insert(key).second) << display;
            EXPECT_LE(key.size(), 50) << display;
            EXPECT_FALSE(key.contains('/') || key.contains('\n')) << display;
        }
}

TEST_F(InstanceAddressTest, TheRuntimeFolderIsUsedWhenItIsPrivate)
{
    const auto address = InstanceAddress::forThisSession();
    ASSERT_TRUE(address);
    EXPECT_EQ(address->socketPath().toStdString(), (runtime_.path() / uidName("display-:0").toStdString()).string());
    EXPECT_EQ(address->lockPath(), address->socketPath() + ".lock");
}

// Without a runtime folder, one in the user's cache folder: a shared
// folder's name could be taken first by another user.
TEST_F(InstanceAddressTest, ElseAPrivateFolderInTheCacheFolder)
{
    const fs::path fallback = cache_.path() / "quilo";
    fs::create_directory(temporary_ / ("quilo-" + std::to_string(::getuid())));
    fs::permissions(temporary_ / ("quilo-" + std::to_string(::getuid())), fs::perms::all);
    for (const char* runtime : {"", "relative/folder", "/no/such/folder"}) {
        ::setenv("XDG_RUNTIME_DIR", runtime, 1);
        const auto address = InstanceAddress::forThisSession();
        ASSERT_TRUE(address) << runtime;
        EXPECT_EQ(address->directory.toStdString(), fallback.string());
    }
    EXPECT_EQ(fs::status(fallback).permissions() & fs::perms::all, fs::perms::owner_all);

    ::setenv("XDG_RUNTIME_DIR", runtime_.path().c_str(), 1);
    fs::permissions(runtime_.path(), fs::perms::group_read | fs::perms::group_exec, fs::perm_options::add);
    EXPECT_EQ(InstanceAddress::forThisSession()->directory.toStdString(), fallback.string())
        << "a runtime folder others may enter is passed over";
}

TEST_F(InstanceAddressTest, ACacheFolderThatIsNotPrivateIsRefused)
{
    ::unsetenv("XDG_RUNTIME_DIR");
    const fs::path fallback = cache_.path() / "quilo";
    LogCapture log;

    fs::create_directory(temporary_ / "elsewhere");
    fs::create_directory_symlink(temporary_ / "elsewhere", fallback);
    EXPECT_FALSE(InstanceAddress::forThisSession()) << "a symbolic link";
    fs::remove(fallback);

    fs::create_directory(fallback);
    fs::permissions(fallback, fs::perms::all);
    EXPECT_FALSE(InstanceAddress::forThisSession()) << "open to others";
    if (::getuid() == 0) {
        fs::permissions(fallback, fs::perms::owner_all);
        ASSERT_EQ(::chown(fallback.c_str(), 65534, 65534), 0);
        EXPECT_FALSE(InstanceAddress::forThisSession()) << "another user's";
    }
    EXPECT_FALSE(log.lines().empty());
}

} // namespace
} // namespace quilo
