// quilo request as a file manager runs it, a real process handing its job
// to the instance that this test serves.
#include "foundation/QuiloKeys.h"
#include "tests/cli/RunQuilo.h"
#include "tests/support/InstanceServing.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

using namespace test;

class RequestCommand : public ::testing::Test {
protected:
    RequestCommand() { std::filesystem::create_directory(folder_ / "My Pictures"); }

    // Run from the pictures' folder, on a display (never opened: the job's
    // windows are the instance's).
    Outcome request(const std::string& arguments)
    {
        return whileServing([&] {
            return quilo("request " + arguments, "cd " + quoted(folder_ / "My Pictures") + " && export DISPLAY=:99;");
        });
    }

    QString inFolder(const std::string& name) const
    {
        return QString::fromStdString((folder_.path() / "My Pictures" / name).string());
    }

    TestSession session_;
    TemporaryDirectory folder_;
    RecordingInstance instance_{session_.address()};
};

TEST_F(RequestCommand, TheJobAndItsFilesGoToTheRunningInstanceInOrder)
{
    ASSERT_TRUE(instance_.server().listen());
    const Outcome saved = request("save-as-icns 'b b.jpg' /elsewhere/a.png './ü.gif' -- -x.jpg");
    EXPECT_EQ(saved.status, 0) << saved.output;
    EXPECT_EQ(saved.output, "");
    const Outcome restored = request("restore-thumbnails");
    EXPECT_EQ(restored.status, 0) << restored.output;
    instance_.busy = true;
    const Outcome refused = request("create-thumbnails a.jpg");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.output, "quilo request: the running Quilo is busy with another job; try again once it has "
                              "finished\n");

    EXPECT_EQ(instance_.jobs,
              (std::vector<ReceivedJob>{
                  {kSaveAsICNS, {inFolder("b b.jpg"), "/elsewhere/a.png", inFolder("./ü.gif"), inFolder("-x.jpg")}},
                  {kRestoreThumbnails, {}}}));
}

TEST_F(RequestCommand, AWrongCommandLineReachesNoInstance)
{
    ASSERT_TRUE(instance_.server().listen());
    for (const char* arguments : {"make-coffee a.jpg", "", "create-thumbnails ''", "--frobnicate create-thumbnails"}) {
        const Outcome outcome = request(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_TRUE(contains(outcome, "quilo request")) << outcome.output;
    }
    EXPECT_TRUE(instance_.jobs.empty());
}

// With no instance, request starts this program with no arguments (the tray
// application) and waits for it to listen. Here it gets a display that no X
// server has, so it ends at once, and the request gives up once the wait is
// over.
TEST_F(RequestCommand, AnInstanceThatNeverListensEndsTheWaitPlainly)
{
    const auto started = std::chrono::steady_clock::now();
    const Outcome outcome = whileServing([&] {
        return quilo("request create-thumbnails a.jpg", "export HOME=" + quoted(folder_.path())
                                                            + " DISPLAY=:4919; unset WAYLAND_DISPLAY QT_QPA_PLATFORM;"
                                                            + " ulimit -c 0;");
    });
    const auto waited = std::chrono::steady_clock::now() - started;
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "quilo request: no running Quilo answered, and none started for the request listened "
                              "within 10 seconds\n");
    EXPECT_GE(waited, std::chrono::seconds(10));
    EXPECT_LT(waited, std::chrono::seconds(20));
}

} // namespace
} // namespace quilo
