#include "app/QuiloController.h"
#include "hotkeys/ApplicationTestsMain.h"
#include "hotkeys/HotKeysController.h"

#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <QAction>

namespace quilo::test {
namespace {

class QuiloControllerTest : public ::testing::Test {
protected:
    TemporaryDirectory folder;
    UserDefaults defaults{QString::fromStdString((folder.path() / "Quilo.conf").string())};
    QuiloController controller{defaults};
};

TEST_F(QuiloControllerTest, FactoryDefaultsWithNoSettingsAtAll)
{
    EXPECT_TRUE(defaults.boolForKey(RTZCheckForUpdatesAtLaunchKey));
    EXPECT_TRUE(defaults.boolForKey(RTZMaintainImageModificationDatesKey));
    EXPECT_FALSE(defaults.boolForKey(RTZAddDropShadowToNewThumbnailsKey));
    EXPECT_TRUE(defaults.boolForKey(RTZCreateThumbnailsForNewICNSFilesKey));
    EXPECT_EQ(defaults.dictionaryForKey(RTZHotKeysKey), HotKeysController::sharedInstance().defaultHotKeysDict());
}

TEST_F(QuiloControllerTest, EveryMenuItemIsThereAndEnabled)
{
    QStringList titles;
    for (const QAction* item : controller.menu().actions()) {
        if (item->isSeparator())
            continue;
        titles << item->text();
        EXPECT_TRUE(item->isEnabled()) << item->text().toStdString();
    }
    EXPECT_EQ(titles, (QStringList{"Create Thumbnails", "Restore Thumbnails", "Save as ICNS Files", "Preferences…",
                                   "About Quilo", "Donate…", "Quit Quilo"}));
}

// Only the three names, exactly, start a job; before launching has finished
// there is no job driver, so anything that tried to start one would crash.
TEST_F(QuiloControllerTest, HotKeyEventsWithOtherNamesStartNothing)
{
    for (const QVariant& name : {QVariant("create thumbnails"), QVariant("Create Thumbnails "), QVariant(),
                                 QVariant(QStringLiteral("Save as ICNS"))})
        controller.handleHotKeyEvent(Notification{"RTZHandleHotKeyEvent", name, {}});
    EXPECT_EQ(controller.creatingThumbnailsWindow(), nullptr);
}

} // namespace
} // namespace quilo::test
