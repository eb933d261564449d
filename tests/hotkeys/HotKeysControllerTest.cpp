#include "hotkeys/ApplicationTestsMain.h"
#include "hotkeys/HotKeysController.h"

#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

namespace quilo::test {
namespace {

using Registrations = std::vector<std::tuple<std::int32_t, std::int32_t>>;

class HotKeysControllerTest : public ::testing::Test {
protected:
    HotKeysControllerTest()
    {
        defaults.registerDefaults({{RTZHotKeysKey, controller.defaultHotKeysDict()}});
        gRegistrar->registrations.clear();
        gRegistrar->unregistered.clear();
    }

    Registrations registeredCombinations() const
    {
        Registrations combinations;
        for (const auto& r : gRegistrar->registrations)
            combinations.emplace_back(r.keyCode, r.modifiers);
        return combinations;
    }

    TemporaryDirectory folder;
    UserDefaults defaults{QString::fromStdString((folder.path() / "Quilo.conf").string())};
    HotKeysController controller{QuiloApplication::sharedApplication(), defaults};
};

TEST_F(HotKeysControllerTest, FactoryValuesRegisterTheTwoHotKeysThatAreOn)
{
    controller.registerHotKeys();
    EXPECT_EQ(registeredCombinations(), (Registrations{{17, 0x0300}, {17, 0x0B00}}));
    EXPECT_EQ(controller.userDescriptionForHotKeyKey(RTZHotKey_CreateThumbnails), QString::fromUtf8("⌘⇧ T"));
    EXPECT_EQ(controller.userDescriptionForHotKeyKey(RTZHotKey_SaveAsICNS), QString::fromUtf8("⌘^ T"));
    EXPECT_FALSE(controller.usingHotKey(RTZHotKey_SaveAsICNS));
    EXPECT_EQ(controller.hotKeyRefs()[2], 0u);
}

TEST_F(HotKeysControllerTest, ACombinationCountsAsTakenWhateverItsUse)
{
    EXPECT_TRUE(controller.hotKeyInUse(17, 0x1100, RTZHotKey_CreateThumbnails)) << "Save as ICNS holds it, off";
    EXPECT_FALSE(controller.hotKeyInUse(17, 0x0300, RTZHotKey_CreateThumbnails)) << "only the skipped record holds it";
    EXPECT_TRUE(controller.hotKeyInUse(17, 0x0300, RTZHotKey_SaveAsICNS));
    EXPECT_FALSE(controller.hotKeyInUse(17, 0x0100, QString()));
}

TEST_F(HotKeysControllerTest, SwitchingOffLeavesTheOldReferenceToBeDroppedAgain)
{
    controller.registerHotKeys();
    const EventHotKeyRef restore = controller.hotKeyRefs()[1];
    ASSERT_NE(restore, 0u);

    controller.setUsingHotKey(RTZHotKey_RestoreThumbnails, false);
    controller.registerHotKeys();
    EXPECT_EQ(controller.hotKeyRefs()[1], restore) << "the slot keeps the dropped reference";
    EXPECT_EQ(registeredCombinations(), (Registrations{{17, 0x0300}, {17, 0x0B00}, {17, 0x0300}}));

    gRegistrar->unregistered.clear();
    controller.unregisterHotKeys();
    EXPECT_EQ(gRegistrar->unregistered,
              (std::vector<EventHotKeyRef>{controller.hotKeyRefs()[0], restore, 0}))
        << "every slot is passed on, the dropped and the empty one too";
}

TEST_F(HotKeysControllerTest, ChangesWriteTheWholeDictionary)
{
    controller.updateDefaultsForHotKey(RTZHotKey_SaveAsICNS, 1, 0x0100, false);
    const QVariantMap stored = defaults.dictionaryForKey(RTZHotKeysKey);
    EXPECT_EQ(stored.size(), 3);
    EXPECT_EQ(stored.value(RTZHotKey_CreateThumbnails), controller.defaultHotKeysDict().value(RTZHotKey_CreateThumbnails));
    EXPECT_EQ(controller.keyComboForKeyKey(RTZHotKey_SaveAsICNS), KeyCombo(1, 0x0100));

    // Read back by another store over the same file, as the next launch does.
    UserDefaults reread(QString::fromStdString((folder.path() / "Quilo.conf").string()));
    const QVariantMap record = reread.dictionaryForKey(RTZHotKeysKey).value(RTZHotKey_SaveAsICNS).toMap();
    EXPECT_EQ(HotKeysController::keyComboForHotKeyDict(record), KeyCombo(1, 0x0100));
    EXPECT_FALSE(record.value("Use").toBool());

    controller.setUsingHotKey(RTZHotKey_SaveAsICNS, true);
    EXPECT_TRUE(controller.usingHotKey(RTZHotKey_SaveAsICNS));
    EXPECT_EQ(controller.keyComboForKeyKey(RTZHotKey_SaveAsICNS), KeyCombo(1, 0x0100)) << "only Use changed";

    controller.removeHotKeyFromDefaults(RTZHotKey_RestoreThumbnails);
    EXPECT_FALSE(controller.hotKeysDict().contains(RTZHotKey_RestoreThumbnails)) << "no factory value comes back";
    EXPECT_EQ(controller.keyComboForKeyKey(RTZHotKey_RestoreThumbnails), KeyCombo(0, 0)) << "a missing record reads 0";
}

TEST_F(HotKeysControllerTest, WithoutAnyHotKeysNothingRegistersAndOnlyZeroZeroIsTaken)
{
    UserDefaults bare(QString::fromStdString((folder.path() / "Bare.conf").string()));
    HotKeysController store(QuiloApplication::sharedApplication(), bare);
    store.registerHotKeys();
    EXPECT_TRUE(gRegistrar->registrations.empty());
    EXPECT_TRUE(store.hotKeyInUse(0, 0, QString()));
    EXPECT_FALSE(store.hotKeyInUse(17, 0x0300, QString()));
}

TEST_F(HotKeysControllerTest, APressedHotKeyBecomesTheActionsEvent)
{
    std::vector<QVariant> handled;
    NotificationCenter::defaultCenter().addObserver(&handled, QStringLiteral("RTZHandleHotKeyEvent"),
                                                    [&](const Notification& n) {
                                                        EXPECT_TRUE(n.userInfo.isEmpty());
                                                        handled.push_back(n.object);
                                                    });
    controller.registerHotKeys();
    gRegistrar->deliver(controller.hotKeyRefs()[1], HotKeyTransition::Pressed);
    QCoreApplication::processEvents();
    NotificationCenter::defaultCenter().removeObserver(&handled);
    EXPECT_EQ(handled, (std::vector<QVariant>{RTZHotKey_RestoreThumbnails}));
}

TEST_F(HotKeysControllerTest, AnotherStoreBesideTheSharedOneIsWarnedAbout)
{
    HotKeysController::sharedInstance();
    LogCapture log;
    HotKeysController second(QuiloApplication::sharedApplication(), defaults);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"WARNING: Allocating multiple instances of HotKeysController!"}));
}

} // namespace
} // namespace quilo::test
