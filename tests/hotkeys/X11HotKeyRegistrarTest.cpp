// Hot keys grabbed on a real X server and pressed through it (xdotool's
// XTEST input), with other programs on the same server.
#include "HotKeysLib/KeyCombo.h"
#include "platform/linux/X11HotKeyRegistrar.h"
#include "platform/linux/X11ModifierMasks.h"
#include "tests/hotkeys/OtherXPrograms.h"
#include "tests/support/LogCapture.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QGuiApplication>

#include <algorithm>

#include <unistd.h>

namespace quilo {
namespace {

using namespace quilo::test;

constexpr std::int16_t kMacT = 17;
constexpr xcb_keycode_t kXT = 20 + 8; // evdev KEY_T
// Xvfb's keymap: Super on Mod4, Alt on Mod1, Num Lock on Mod2.
constexpr std::uint16_t kSuperShift = XCB_MOD_MASK_4 | XCB_MOD_MASK_SHIFT;
constexpr EventHotKeyID kId{fourCharCode("Test"), 7};

void serveEventsFor(int milliseconds)
{
    QEventLoop loop;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (std::chrono::steady_clock::now() < deadline)
        loop.processEvents(QEventLoop::AllEvents, 10);
}

bool serveEventsUntil(const std::function<bool()>& condition, double seconds = 10)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!condition() && std::chrono::steady_clock::now() < deadline)
        serveEventsFor(10);
    return condition();
}

void xdotool(const std::string& arguments)
{
    const std::string command = "xdotool " + arguments;
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
}

class X11HotKeys : public ::testing::Test {
protected:
    X11HotKeys()
    {
        registrar_.setEventHandler([this](const HotKeyEvent& event) { events_.push_back(event); });
        marker_ = registrar_.registerEventHotKey(120, 0, kId); // a bare F2
        EXPECT_NE(marker_, 0u);
    }

    // Presses the keys, then the marker: the server delivers in order, so
    // once the marker's release is in, whatever the keys caused is in too.
    void press(const std::string& keys = "super+shift+t")
    {
        xdotool("key " + keys);
        settle();
    }
    void settle()
    {
        xdotool("key F2");
        const auto markerReleased = [this] {
            return std::ranges::any_of(events_, [this](const HotKeyEvent& event) {
                return event.ref == marker_ && event.transition == HotKeyTransition::Released;
            });
        };
        ASSERT_TRUE(serveEventsUntil(markerReleased)) << "the marker key never arrived";
        std::erase_if(events_, [this](const HotKeyEvent& event) { return event.ref == marker_; });
    }

    void expectOnePressAndRelease(EventHotKeyRef ref)
    {
        ASSERT_EQ(events_.size(), 2u);
        EXPECT_EQ(events_[0].transition, HotKeyTransition::Pressed);
        EXPECT_EQ(events_[1].transition, HotKeyTransition::Released);
        for (const HotKeyEvent& event : events_) {
            EXPECT_EQ(event.ref, ref);
            EXPECT_EQ(event.id.signature, kId.signature);
            EXPECT_EQ(event.id.id, kId.id);
        }
        events_.clear();
    }

    X11HotKeyRegistrar registrar_;
    std::vector<HotKeyEvent> events_;
    EventHotKeyRef marker_ = 0;
};

TEST_F(X11HotKeys, PressAndReleaseArriveOnceWhileAnotherProgramHasTheFocus)
{
    const std::string log = ::testing::TempDir() + "xev-" + std::to_string(::getpid()) + ".log";
    FocusedWindow other(log);
    const EventHotKeyRef ref = registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId);
    ASSERT_NE(ref, 0u);

    press();
    expectOnePressAndRelease(ref);
    EXPECT_FALSE(other.sawKeyPress(kXT)) << "the focused window saw the hot key";
    press("super+t");
    press("shift+t");
    press("super+shift+alt+t");
    EXPECT_TRUE(events_.empty()) << "other modifiers are other combinations";
    EXPECT_TRUE(other.sawKeyPress(kXT));
}

TEST_F(X11HotKeys, NumLockAndCapsLockDoNotMatter)
{
    const EventHotKeyRef ref = registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId);
    ASSERT_NE(ref, 0u);
    xdotool("key Num_Lock");
    press();
    expectOnePressAndRelease(ref);
    xdotool("key Caps_Lock");
    press();
    expectOnePressAndRelease(ref);
}

TEST_F(X11HotKeys, AHeldKeyIsOnePressWhateverTheServerRepeats)
{
    const EventHotKeyRef ref = registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId);
    ASSERT_NE(ref, 0u);
    xdotool("keydown super+shift+t");
    serveEventsFor(1500); // past the server's repeat delay
    xdotool("keyup t keyup shift keyup super");
    settle();
    expectOnePressAndRelease(ref);

    // The release is the key's, whichever modifiers are still down.
    xdotool("keydown super+shift+t keyup super keyup shift keyup t");
    settle();
    expectOnePressAndRelease(ref);
}

// Another program's grab of one variant stops the registration, and the
// variants the registrar had taken are given back, so that program's grabs
// stay exactly as they were.
TEST_F(X11HotKeys, ACombinationAnotherProgramHoldsIsRefusedAndLeftToIt)
{
    OtherXClient other;
    ASSERT_TRUE(other.grabKey(kXT, kSuperShift));
    LogCapture log;
    EXPECT_EQ(registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId), 0u);
    EXPECT_EQ(log.lines(), std::vector<std::string>{"X keycode 28 with modifiers 0x41 is grabbed by another program"});
    press();
    EXPECT_TRUE(other.receivesPress(kXT));
    EXPECT_TRUE(events_.empty());

    other.ungrabKey(kXT, kSuperShift);
    ASSERT_TRUE(other.grabKey(kXT, kSuperShift | XCB_MOD_MASK_2));
    EXPECT_EQ(registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId), 0u);
    EXPECT_TRUE(other.grabKey(kXT, kSuperShift)) << "the registrar kept a variant it took";
    EXPECT_TRUE(other.grabKey(kXT, kSuperShift | XCB_MOD_MASK_LOCK));

    other.ungrabKey(kXT, XCB_MOD_MASK_ANY);
    const EventHotKeyRef ref = registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId);
    ASSERT_NE(ref, 0u);
    press();
    expectOnePressAndRelease(ref);
    EXPECT_FALSE(other.receivesPress(kXT, 0.2));
}

TEST_F(X11HotKeys, ACombinationIsHeldOncePerProcess)
{
    X11HotKeyRegistrar second;
    const EventHotKeyRef ref = registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId);
    ASSERT_NE(ref, 0u);
    EXPECT_EQ(registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId), 0u);
    EXPECT_EQ(second.registerEventHotKey(kMacT, cmdKey + shiftKey, kId), 0u);
    EXPECT_EQ(second.registerEventHotKey(kMacT, 0x10000 + cmdKey + shiftKey, kId), 0u) << "only the four bits count";
    const EventHotKeyRef other = second.registerEventHotKey(kMacT, cmdKey + optionKey + shiftKey, kId);
    EXPECT_NE(other, 0u);
    EXPECT_NE(other, ref);

    second.unregisterEventHotKey(ref);
    EXPECT_EQ(second.registerEventHotKey(kMacT, cmdKey + shiftKey, kId), 0u) << "a registrar dropped another's key";
    registrar_.unregisterEventHotKey(ref);
    EXPECT_NE(second.registerEventHotKey(kMacT, cmdKey + shiftKey, kId), 0u);
}

TEST_F(X11HotKeys, AnUnregisteredKeyIsSilentAndFreeForOthers)
{
    const EventHotKeyRef ref = registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId);
    ASSERT_NE(ref, 0u);
    registrar_.unregisterEventHotKey(ref);
    registrar_.unregisterEventHotKey(ref);
    registrar_.unregisterEventHotKey(0);
    registrar_.unregisterEventHotKey(ref + 1000);
    press();
    EXPECT_TRUE(events_.empty());
    OtherXClient other;
    EXPECT_TRUE(other.grabKey(kXT, kSuperShift | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2));
}

// And a plain key, which would be taken from every program: logged.
TEST_F(X11HotKeys, KeysWithoutAnXKeycodeAreRefused)
{
    LogCapture log;
    EXPECT_EQ(registrar_.registerEventHotKey(36, shiftKey, kId), 0u) << "Shift+Return";
    EXPECT_EQ(log.lines(), std::vector<std::string>{"Hot key 36 with modifiers 0x0200 refused: without Super, Alt or "
                                                    "Control it would be taken from every program of the session"});
    EXPECT_EQ(registrar_.registerEventHotKey(66, cmdKey, kId), 0u) << "no Mac key has code 66";
    EXPECT_EQ(registrar_.registerEventHotKey(-1, cmdKey, kId), 0u);
    EXPECT_EQ(registrar_.registerEventHotKey(300, cmdKey, kId), 0u);
    EXPECT_EQ(registrar_.registerEventHotKey(63, cmdKey, kId), 0u) << "Fn lies beyond X's keycodes";
    EXPECT_EQ(registrar_.registerEventHotKey(kMacT, -1, kId), 0u);
    EXPECT_NE(registrar_.registerEventHotKey(122, 0, kId), 0u) << "a bare F1";
}

// A desktop that moves Super to another modifier bit: the grab follows it.
TEST_F(X11HotKeys, GrabsFollowTheModifierMapping)
{
    const EventHotKeyRef ref = registrar_.registerEventHotKey(kMacT, cmdKey + shiftKey, kId);
    ASSERT_NE(ref, 0u);
    press();
    events_.clear();

    OtherXClient other;
    xcb_connection_t* connection = other.connection();
    auto* mapping = xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr);
    ASSERT_TRUE(mapping);
    const int perModifier = mapping->keycodes_per_modifier;
    std::vector<xcb_keycode_t> keycodes(xcb_get_modifier_mapping_keycodes(mapping),
                                        xcb_get_modifier_mapping_keycodes(mapping) + 8 * perModifier);
    std::free(mapping);
    // Mod3 takes Mod4's keys and Mod4 is left empty.
    std::copy_n(keycodes.begin() + 6 * perModifier, perModifier, keycodes.begin() + 5 * perModifier);
    std::fill_n(keycodes.begin() + 6 * perModifier, perModifier, 0);
    auto* status = xcb_set_modifier_mapping_reply(
        connection, xcb_set_modifier_mapping(connection, std::uint8_t(perModifier), keycodes.data()), nullptr);
    ASSERT_TRUE(status);
    EXPECT_EQ(status->status, XCB_MAPPING_STATUS_SUCCESS);
    std::free(status);

    settle(); // the mapping's notice comes before the marker
    press();
    expectOnePressAndRelease(ref);
    EXPECT_TRUE(other.grabKey(kXT, kSuperShift)) << "the grab on the old bits was kept";
}

} // namespace
} // namespace quilo
