#include "hotkeys/ApplicationTestsMain.h"
#include "hotkeys/SystemDefinedEvent.h"

#include "foundation/NotificationCenter.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <vector>

namespace quilo::test {
namespace {

// Counts the system-defined events that reach normal dispatch.
class DispatchWatcher final : public QObject {
public:
    DispatchWatcher() { qApp->installEventFilter(this); }
    ~DispatchWatcher() override { qApp->removeEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == SystemDefinedEvent::systemDefinedType())
            ++dispatched;
        return false;
    }
    int dispatched = 0;
};

class QuiloApplicationTest : public ::testing::Test {
protected:
    QuiloApplicationTest()
    {
        NotificationCenter::defaultCenter().addObserver(this, QStringLiteral("RTZHotKeyPressed"),
                                                        [this](const Notification& n) { posted.push_back(n); });
    }
    ~QuiloApplicationTest() override { NotificationCenter::defaultCenter().removeObserver(this); }

    // The registrar's event goes through the application's queue.
    void press(EventHotKeyRef ref, HotKeyTransition transition = HotKeyTransition::Pressed)
    {
        gRegistrar->deliver(ref, transition);
        QCoreApplication::processEvents();
    }

    QuiloApplication& application = QuiloApplication::sharedApplication();
    std::vector<Notification> posted;
};

TEST_F(QuiloApplicationTest, PressOfARegisteredHotKeyPostsItsDescriptionAndIsStillDispatched)
{
    DispatchWatcher watcher;
    const EventHotKeyRef ref = application.registerHotKey(17, 0x0300, QStringLiteral("Create Thumbnails"));
    ASSERT_NE(ref, 0u);
    EXPECT_EQ(gRegistrar->registrations.back().keyCode, 17);
    EXPECT_EQ(gRegistrar->registrations.back().modifiers, 0x0300);

    press(ref);
    ASSERT_EQ(posted.size(), 1u);
    EXPECT_EQ(posted[0].object.value<QObject*>(), &application);
    EXPECT_EQ(posted[0].userInfo, (QVariantMap{{"KeyDescription", "Create Thumbnails"}}));
    EXPECT_EQ(watcher.dispatched, 1);

    press(ref, HotKeyTransition::Released);
    EXPECT_EQ(posted.size(), 1u) << "a release posts nothing";
    EXPECT_EQ(watcher.dispatched, 2) << "a release is dispatched all the same";

    press(ref + 1000);
    EXPECT_EQ(posted.size(), 1u) << "an unknown reference posts nothing";
    EXPECT_EQ(watcher.dispatched, 3);

    application.unregisterHotKey(ref);
    EXPECT_EQ(gRegistrar->unregistered.back(), ref);
    press(ref);
    EXPECT_EQ(posted.size(), 1u) << "nothing after unregistering";
}

TEST_F(QuiloApplicationTest, RefusedRegistrationAnswersZeroAndUnregisteringZeroIsHarmless)
{
    gRegistrar->refusedCombinations.insert({17, 0x1100});
    EXPECT_EQ(application.registerHotKey(17, 0x1100, QStringLiteral("Save as ICNS Files")), 0u);
    application.unregisterHotKey(0);
    EXPECT_EQ(gRegistrar->unregistered.back(), 0u);
    press(0);
    EXPECT_TRUE(posted.empty());
    gRegistrar->refusedCombinations.clear();
}

} // namespace
} // namespace quilo::test
