// The capture button on a real X server: keys pressed through the X server
// arrive as Mac key codes with Carbon modifiers, and go no further.
#include "HotKeysLib/KeyBroadcaster.h"
#include "foundation/NotificationCenter.h"
#include "tests/desktop/DesktopUser.h"

#include <QKeyEvent>
#include <QShortcut>
#include <QVBoxLayout>

namespace quilo {
namespace {

using namespace quilo::test;

struct Broadcast {
    qint64 keyCode;
    qint64 modifiers;
    bool operator==(const Broadcast&) const = default;
};

class KeyBroadcasterOnX : public ::testing::Test {
protected:
    KeyBroadcasterOnX()
    {
        onGui([this] {
            window_ = std::make_unique<QWidget>();
            window_->setWindowTitle("Capture");
            auto* layout = new QVBoxLayout(window_.get());
            broadcaster_ = new KeyBroadcaster("Press keys", window_.get());
            layout->addWidget(broadcaster_);
            QObject::connect(broadcaster_, &QPushButton::clicked, [this] { ++clicked_; });
            // A shortcut of the window's own, which a captured key must not reach.
            auto* shortcut = new QShortcut(QKeySequence("Ctrl+Q"), window_.get());
            QObject::connect(shortcut, &QShortcut::activated, [this] { ++shortcuts_; });
            window_->show();
            broadcaster_->setFocus();
        });
        EXPECT_TRUE(eventually([this] { return window_->isVisible(); }));
        actAsUser([this] { focusWindow(window_.get()); });
        NotificationCenter::defaultCenter().addObserver(this, "KeyBraodcasterKeyEvent", [this](const Notification& n) {
            EXPECT_EQ(n.object.value<QObject*>(), broadcaster_);
            broadcasts_.push_back({n.userInfo.value("KeyCode").toLongLong(), n.userInfo.value("Modifiers").toLongLong()});
        });
        EXPECT_TRUE(eventually([this] { return broadcaster_->hasFocus(); }));
    }
    ~KeyBroadcasterOnX() override
    {
        NotificationCenter::defaultCenter().removeObserver(this);
        onGui([this] { window_.reset(); });
    }

    std::vector<Broadcast> press(const std::string& keys, std::size_t expected)
    {
        actAsUser([&] {
            pressKey(keys);
            eventually([&] { return broadcasts_.size() >= expected; }, 10);
        });
        QCoreApplication::processEvents();
        return broadcasts_;
    }

    std::unique_ptr<QWidget> window_;
    KeyBroadcaster* broadcaster_ = nullptr;
    std::vector<Broadcast> broadcasts_;
    int clicked_ = 0;
    int shortcuts_ = 0;
};

TEST_F(KeyBroadcasterOnX, KeysArriveAsMacKeyCodesWithCarbonModifiersAndGoNoFurther)
{
    press("super+shift+t", 1);
    press("a", 2);
    press("ctrl+q", 3);
    press("space", 4);
    press("Shift_L", 4); // a modifier on its own is no key press
    press("alt+F1", 5);
    EXPECT_EQ(broadcasts_, (std::vector<Broadcast>{{17, 0x0300}, {0, 0}, {12, 0x1000}, {49, 0}, {122, 0x0800}}));
    EXPECT_EQ(shortcuts_, 0) << "the window's shortcut fired";
    EXPECT_EQ(clicked_, 0) << "space pressed the button";

    press("Caps_Lock super+shift+t Caps_Lock", 6);
    EXPECT_EQ(broadcasts_.back(), (Broadcast{17, 0x0300})) << "caps lock is dropped";
}

} // namespace
} // namespace quilo
