#include "app/QuiloController.h"
#include "hotkeys/ApplicationTestsMain.h"
#include "hotkeys/HotKeysController.h"

#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "tests/support/LoopbackHttpServer.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include "prefs/MakersWebSite.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QTimer>

#include <thread>

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

// What a visible top-level window of that title shows in its labels.
QStringList labelsOfWindow(const QString& title)
{
    QStringList texts;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowTitle() == title)
            for (const QLabel* label : window->findChildren<QLabel*>())
                if (label->isVisible())
                    texts << label->text();
    return texts;
}

TEST_F(QuiloControllerTest, AboutSaysWhatQuiloIsItsVersionCopyrightAndWebSite)
{
    QString about;
    QTimer::singleShot(0, [&] {
        about = labelsOfWindow("About Quilo").join('\n');
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget()))
            box->accept();
    });
    controller.menuAboutQuilo();
    for (const QString& part : {QString("Gives picture files their own pictures as icons"), QString("Version 1.1"),
                                QString("Copyright © 2026"), QString(kHomePage)})
        EXPECT_TRUE(about.contains(part)) << part.toStdString() << " not in " << about.toStdString();
}

// No tray here: the preferences come up and say why the menu is missing.
TEST_F(QuiloControllerTest, WithoutATrayThePreferencesSayWhyTheMenuIsMissing)
{
    controller.showStatusItem();
    EXPECT_TRUE(
        labelsOfWindow("Quilo Preferences").contains("Quilo's menu is missing: no system tray is running yet."));
}

// Quitting while the check at launch still waits for the maker's site ends
// the check there: nothing of it runs once Quilo's objects are gone.
TEST_F(QuiloControllerTest, QuittingStopsTheUpdateCheckStillFetching)
{
    using namespace std::chrono_literals;
    LoopbackHttpServer site;
    site.serve("/v.xml", HttpResponse::late("<plist><dict><key>Quilo</key><dict><key>Current Version</key>"
                                            "<string>1.1</string></dict></dict></plist>", 1500));
    auto quitting = std::make_unique<QuiloController>(defaults);
    quitting->setUpdateDocumentURL(site.url("/v.xml"));
    quitting->checkForUpdatesInTheBackground();
    for (int tries = 0; tries < 100 && site.requests().isEmpty(); ++tries)
        std::this_thread::sleep_for(20ms);
    const auto quitAt = std::chrono::steady_clock::now();
    quitting.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - quitAt, 1s);
    std::this_thread::sleep_for(2s); // past the site's answer
    EXPECT_EQ(site.requests(), QStringList{"GET /v.xml"});
    EXPECT_FALSE(defaults.objectForKey(RTZLastCheckForUpdatesKey).isValid());
}

} // namespace
} // namespace quilo::test
