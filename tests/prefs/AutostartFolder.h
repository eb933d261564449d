#pragma once

#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace quilo::test {

// A test with config and data folders of its own: login items go to its
// autostart folder, which does not exist until something is written.
class AutostartFolderTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ::setenv("XDG_CONFIG_HOME", configHome_.path().c_str(), 1);
        ::setenv("XDG_DATA_HOME", dataHome().c_str(), 1);
    }
    void TearDown() override
    {
        ::unsetenv("XDG_CONFIG_HOME");
        ::unsetenv("XDG_DATA_HOME");
    }

    std::filesystem::path autostart() const { return configHome_ / "autostart"; }
    std::filesystem::path dataHome() const { return configHome_ / "data"; }

private:
    TemporaryDirectory configHome_;
};

} // namespace quilo::test
