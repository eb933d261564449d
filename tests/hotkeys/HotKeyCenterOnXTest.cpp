// The shared hot-key centre on the session's own registrar: a key pressed
// on the X server reaches the centre's target.
#include "HotKeysLib/HotKeyCenter.h"
#include "tests/hotkeys/OtherXClient.h"

#include <QEventLoop>

namespace quilo {
namespace {

struct Receiver {
    int presses = 0;
    void pressed(HotKeyCenter&) { ++presses; }
};

void pressAndServeEvents()
{
    ASSERT_EQ(std::system("xdotool key super+shift+t"), 0);
    QEventLoop loop;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
    while (std::chrono::steady_clock::now() < deadline)
        loop.processEvents(QEventLoop::AllEvents, 10);
}

TEST(HotKeyCenterOnX, TheSharedCentreSendsTheActionOfAKeyPressedOnTheServer)
{
    HotKeyCenter& center = HotKeyCenter::sharedCenter();
    EXPECT_EQ(&center, &HotKeyCenter::sharedCenter());
    Receiver receiver;
    ASSERT_TRUE(center.addHotKey("Create Thumbnails", KeyCombo(17, cmdKey + shiftKey), &receiver, &Receiver::pressed));
    pressAndServeEvents();
    EXPECT_EQ(receiver.presses, 1);

    center.removeHotKey("Create Thumbnails");
    pressAndServeEvents();
    EXPECT_EQ(receiver.presses, 1);
    test::OtherXClient other;
    EXPECT_TRUE(other.grabKey(20 + 8, XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT)) << "T with Super and Shift is free again";
}

} // namespace
} // namespace quilo
