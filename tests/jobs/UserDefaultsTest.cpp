// The user defaults: registered values under the user's, one file per user
// found through XDG_CONFIG_HOME, dictionaries as single values.
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <QDateTime>

namespace quilo {
namespace {

TEST(UserDefaults, TheUsersValueWinsOverTheRegisteredOneAndSurvivesTheProcess)
{
    test::TemporaryDirectory directory;
    const QString file = QString::fromStdString((directory / "Quilo.conf").string());
    {
        UserDefaults defaults(file);
        defaults.registerDefaults(booleanFactoryDefaults());
        EXPECT_TRUE(defaults.boolForKey(RTZCheckForUpdatesAtLaunchKey));
        EXPECT_TRUE(defaults.boolForKey(RTZMaintainImageModificationDatesKey));
        EXPECT_FALSE(defaults.boolForKey(RTZAddDropShadowToNewThumbnailsKey));
        EXPECT_TRUE(defaults.boolForKey(RTZCreateThumbnailsForNewICNSFilesKey));
        EXPECT_FALSE(defaults.objectForKey(RTZLastCheckForUpdatesKey).isValid()) << "nothing registered";

        defaults.setBool(false, RTZCheckForUpdatesAtLaunchKey);
        const QVariantMap hotKeys{{"Create Thumbnails", QVariantMap{{"Use", true}, {"KeyCombo", QVariantList{17, 768}}}}};
        defaults.setObject(hotKeys, RTZHotKeysKey);
        defaults.setObject(QDateTime::fromSecsSinceEpoch(1700000000, Qt::UTC), RTZLastCheckForUpdatesKey);
        EXPECT_TRUE(defaults.synchronize());
    }
    UserDefaults reread(file);
    reread.registerDefaults(booleanFactoryDefaults());
    EXPECT_FALSE(reread.boolForKey(RTZCheckForUpdatesAtLaunchKey));
    const QVariantMap hotKeys = reread.dictionaryForKey(RTZHotKeysKey);
    EXPECT_EQ(hotKeys.value("Create Thumbnails").toMap().value("KeyCombo").toList(), (QVariantList{17, 768}));
    EXPECT_EQ(reread.objectForKey(RTZLastCheckForUpdatesKey).toDateTime().toSecsSinceEpoch(), 1700000000);

    reread.removeObjectForKey(RTZCheckForUpdatesAtLaunchKey);
    EXPECT_TRUE(reread.boolForKey(RTZCheckForUpdatesAtLaunchKey)) << "back to the registered value";
    reread.setVolatileOverride(false, RTZCheckForUpdatesAtLaunchKey);
    EXPECT_FALSE(reread.boolForKey(RTZCheckForUpdatesAtLaunchKey));
    reread.synchronize();
    EXPECT_TRUE(UserDefaults(file).objectForKey(RTZCheckForUpdatesAtLaunchKey).isNull()) << "an override stays in memory";
}

TEST(UserDefaults, TheStandardOneLivesInTheXdgConfigFolder)
{
    test::TemporaryDirectory directory;
    ::setenv("XDG_CONFIG_HOME", directory.path().c_str(), 1);
    UserDefaults& standard = UserDefaults::standardUserDefaults();
    standard.setBool(true, "Probe");
    ASSERT_TRUE(standard.synchronize());
    EXPECT_TRUE(std::filesystem::exists(directory / "Quilo/Quilo.conf"));
}

} // namespace
} // namespace quilo
