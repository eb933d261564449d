// The preferences window's controller without a screen: the launch-at-login checkbox over the session's autostart list
// (in a folder of the run's own) and the check-now button.
#include "hotkeys/ApplicationTestsMain.h"
#include "hotkeys/HotKeysController.h"
#include "prefs/AutostartStore.h"
#include "prefs/PrefsController.h"
#include "prefs/RTZLoginItemHelper.h"

#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "tests/prefs/UpdateCheckFixture.h"

#include <QCheckBox>

namespace quilo::test {
namespace {

class PrefsControllerTest : public ::testing::Test {
protected:
    PrefsControllerTest() { clearLoginItems(); }
    ~PrefsControllerTest() override { clearLoginItems(); }

    static void clearLoginItems() { makeAutostartStore()->writeEntries({}); }
    static qsizetype loginItems() { return makeAutostartStore()->readEntries().size(); }

    QCheckBox& launchAtLogin() { return *prefs.window().findChild<QCheckBox*>("launchAtLoginCheckbox"); }
    void clickLaunchAtLogin(bool checked)
    {
        launchAtLogin().setChecked(checked);
        prefs.launchAtLoginCheckbox();
    }

    TemporaryDirectory folder;
    UserDefaults defaults{QString::fromStdString((folder.path() / "Quilo.conf").string())};
    HotKeysController hotKeys{QuiloApplication::sharedApplication(), defaults};
    PrefsController prefs{defaults, hotKeys};
};

TEST_F(PrefsControllerTest, TheLaunchAtLoginCheckboxAddsOnceAndRemovesEveryEntry)
{
    RTZLoginItemHelper::addSelfToLoginItems(false);
    RTZLoginItemHelper::addSelfToLoginItems(false);
    EXPECT_TRUE(launchAtLogin().isChecked()) << "read when the window loads";

    clickLaunchAtLogin(true);
    EXPECT_EQ(loginItems(), 2) << "already listed: nothing added";
    clickLaunchAtLogin(false);
    EXPECT_EQ(loginItems(), 0) << "both entries removed";
    clickLaunchAtLogin(true);
    ASSERT_EQ(loginItems(), 1);
    EXPECT_EQ(makeAutostartStore()->readEntries()[0].value(AutostartKey::Hide), QVariant(false));

    clearLoginItems();
    prefs.showWindow();
    EXPECT_TRUE(launchAtLogin().isChecked()) << "not read again when shown again";
}

TEST_F(PrefsControllerTest, CheckNowIsAUserInitiatedCheckOfThisVersion)
{
    LoopbackHttpServer server;
    server.serve("/appversions.xml", HttpResponse::document(updateDocument(kApplicationVersion)));
    std::vector<UpdateAlert> alerts;
    prefs.setUpdateDocumentURL(server.url("/appversions.xml"));
    prefs.setAlertRunner([&](const UpdateAlert& alert) {
        alerts.push_back(alert);
        return int(kAlertDefaultReturn);
    });
    prefs.checkForUpdatesNow();
    ASSERT_EQ(alerts.size(), 1u) << "only a check the user asked for reports being up to date";
    EXPECT_TRUE(alerts[0].messageText.contains("up to date", Qt::CaseInsensitive)) << alerts[0].messageText.toStdString();
    EXPECT_TRUE(defaults.objectForKey(RTZLastCheckForUpdatesKey).isValid());
}

} // namespace
} // namespace quilo::test
