// The application object's tests: one QuiloApplication for the whole run, on
// Qt's offscreen platform, over a recording hot-key service, with the user's
// defaults in a folder of the run's own.
#include "hotkeys/ApplicationTestsMain.h"

#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quilo::test {

RecordingHotKeyRegistrar* gRegistrar = nullptr;

} // namespace quilo::test

int main(int argc, char** argv)
{
    using namespace quilo;
    ::testing::InitGoogleTest(&argc, argv);
    test::TemporaryDirectory config;
    ::setenv("XDG_CONFIG_HOME", config.path().c_str(), 1);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QuiloApplication application(
        argc, argv, [] { return std::unique_ptr<ApplicationDelegate>(); },
        [] {
            auto registrar = std::make_unique<test::RecordingHotKeyRegistrar>();
            test::gRegistrar = registrar.get();
            return registrar;
        });
    return RUN_ALL_TESTS();
}
