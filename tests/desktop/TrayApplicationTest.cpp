// The tray application run as a person runs it: the real quilo program and a
// real tray host on the test's X server; the person clicks the tray icon,
// presses hot keys and copies files in another program.
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/HotKeysController.h"
#include "prefs/MakersWebSite.h"
#include "tests/desktop/TrayDesktop.h"
#include "tests/support/TemporaryDirectory.h"

#include <QUrl>

#include <csignal>
#include <sys/stat.h>

namespace quilo {
namespace {

namespace fs = std::filesystem;
using namespace quilo::test;
using namespace std::chrono_literals;

class TrayApplication : public ::testing::Test {
protected:
    TrayApplication()
    {
        for (const fs::path& folder : {config(), runtime(), pictures()})
            fs::create_directories(folder);
        ::chmod(runtime().c_str(), 0700);
        // No update check unless a test wants one: there is no network here.
        defaults().setBool(false, RTZCheckForUpdatesAtLaunchKey);
        defaults().synchronize();
    }

    fs::path config() const { return home_.path() / "config"; }
    fs::path runtime() const { return home_.path() / "runtime"; }
    fs::path pictures() const { return home_.path() / "pictures"; }
    fs::path log(const std::string& name) const { return home_.path() / (name + ".log"); }

    UserDefaults& defaults()
    {
        if (!defaults_)
            defaults_ = std::make_unique<UserDefaults>(QString::fromStdString((config() / "Quilo/Quilo.conf").string()));
        return *defaults_;
    }

    ChildProgram::Environment environment() const
    {
        // The XEmbed tray of the test, not a StatusNotifierItem host elsewhere.
        return {{"HOME", home_.path().string()},  {"XDG_CONFIG_HOME", config().string()},
                {"XDG_RUNTIME_DIR", runtime().string()}, {"QT_QPA_PLATFORM", "xcb"},
                {"DBUS_SESSION_BUS_ADDRESS", std::nullopt}};
    }

    std::unique_ptr<ChildProgram> startQuilo(std::vector<std::string> arguments = {},
                                             const std::string& logName = "quilo")
    {
        arguments.insert(arguments.begin(), QUILO_BINARY);
        return std::make_unique<ChildProgram>(arguments, log(logName), environment());
    }

    std::unique_ptr<ChildProgram> startTray()
    {
        auto tray = std::make_unique<ChildProgram>(
            std::vector<std::string>{"trayer", "--edge", "top", "--align", "right", "--widthtype", "request",
                                     "--height", "24", "--transparent", "false", "--tint", "0xdddddd",
                                     "--SetDockType", "false"},
            log("trayer"), environment());
        EXPECT_TRUE(waitUntil([] { return !firstWindowNamed("panel").empty(); }, 20));
        return tray;
    }

    // Quilo's icon as the tray has taken it in.
    std::optional<XWindow> dockedIcon() const
    {
        const std::string panel = firstWindowNamed("panel");
        if (panel.empty())
            return std::nullopt;
        for (const XWindow& window : childWindows(panel))
            if (window.frame.width() > 1)
                return window;
        return std::nullopt;
    }

    std::optional<XWindow> waitForDockedIcon(double seconds = 30) const
    {
        std::optional<XWindow> icon;
        waitUntil([&] { return (icon = dockedIcon()).has_value(); }, seconds);
        return icon;
    }

    fs::path picture(const std::string& name) const
    {
        const fs::path copy = pictures() / name;
        fs::copy_file(fs::path(QUILO_SOURCE_DIR) / "tests/fixtures/pictures/gradient.JPG", copy);
        return copy;
    }

    // A file manager's Copy: another program owns the clipboard with the files.
    void copyFiles(const std::vector<fs::path>& files)
    {
        std::string uris;
        for (const fs::path& file : files)
            uris += QUrl::fromLocalFile(QString::fromStdString(file.string())).toEncoded().toStdString() + "\r\n";
        putOnClipboard("text/uri-list", uris, home_.path());
    }

    // Clicks the tray icon until its menu is up: a click that lands while
    // the application is still closing a window is lost, as for a person.
    static bool openMenu(const XWindow& icon)
    {
        for (int attempt = 0; attempt < 3; ++attempt) {
            clickAt(icon.frame.center());
            if (waitUntil([] { return windowShown("Quilo menu"); }, 5))
                return true;
        }
        return false;
    }

    static bool hasCustomIcon(const fs::path& file)
    {
        return fs::exists(file.parent_path() / ("._" + file.filename().string()));
    }

    TemporaryDirectory home_;
    std::unique_ptr<UserDefaults> defaults_;
};

// The menu opens from the tray icon and its first item runs Create
// Thumbnails on the files copied in another program.
TEST_F(TrayApplication, MenuRunsCreateThumbnailsOnCopiedFiles)
{
    auto tray = startTray();
    auto quilo = startQuilo();
    ASSERT_TRUE(quilo->waitForLog("Hello from Quilo")) << quilo->log();
    const auto icon = waitForDockedIcon();
    ASSERT_TRUE(icon) << quilo->log();
    std::printf("tray icon visible %lld ms after start\n",
                (long long)std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now()
                                                                                 - quilo->started())
                    .count());
    EXPECT_EQ(icon->frame.size(), QSize(22, 22));
    keepScreenRegion(icon->frame.adjusted(-4, -1, 4, 1), "tray-icon.png");

    const fs::path first = picture("first.jpg"), second = picture("second.jpg");
    copyFiles({first, second});
    ASSERT_TRUE(openMenu(*icon));
    keepScreenRegion(QRect(icon->frame.left() - 260, 0, 300, 260), "tray-menu.png");

    pressKey("Down Return");
    ASSERT_TRUE(waitUntil([&] { return hasCustomIcon(first) && hasCustomIcon(second); }, 30))
        << quilo->log();
    EXPECT_TRUE(quilo->waitForLog("Processing " + first.string()));
}

// About shows the application's name, version and icon; Quit ends it.
TEST_F(TrayApplication, AboutBoxAndQuitFromTheMenu)
{
    auto tray = startTray();
    auto quilo = startQuilo();
    const auto icon = waitForDockedIcon();
    ASSERT_TRUE(icon) << quilo->log();

    ASSERT_TRUE(openMenu(*icon));
    pressKey("Down Down Down Down Down Return"); // the fifth item
    std::string about;
    ASSERT_TRUE(waitUntil([&] { return windowShown("About Quilo"); }, 10));
    about = firstWindowNamed("About Quilo");
    const QRect frame = windowFrame(about);
    ASSERT_GT(frame.width(), 100);
    const QImage shot = keepScreenRegion(frame, "about-box.png");
    // The application's icon: the pig's pink somewhere in the box.
    bool pink = false;
    for (int y = 0; y < shot.height() && !pink; ++y)
        for (int x = 0; x < shot.width() && !pink; ++x) {
            const QColor c = shot.pixelColor(x, y);
            pink = c.red() > 220 && c.green() > 130 && c.green() < 200 && c.blue() > 160 && c.blue() < 215;
        }
    EXPECT_TRUE(pink) << "no icon in the About box";

    pressKey("Return"); // its OK
    ASSERT_TRUE(waitUntil([] { return !windowShown("About Quilo"); }, 10));
    ASSERT_TRUE(openMenu(*icon));
    pressKey("Down Down Down Down Down Down Down Return"); // the last item
    EXPECT_EQ(quilo->waitForExit(10'000), std::optional(0)) << quilo->log();
}

// Preferences opens from the menu; launch at login, switched with the
// keyboard, puts this very program into the session's autostart list and
// takes it out again.
TEST_F(TrayApplication, PreferencesFromTheMenuSwitchLaunchAtLogin)
{
    auto tray = startTray();
    auto quilo = startQuilo();
    const auto icon = waitForDockedIcon();
    ASSERT_TRUE(icon) << quilo->log();

    ASSERT_TRUE(openMenu(*icon));
    pressKey("Down Down Down Down Return"); // the fourth item
    const auto chosen = std::chrono::steady_clock::now();
    ASSERT_TRUE(waitUntil([] { return windowShown("Quilo Preferences"); }, 10));
    std::printf("preferences shown %lld ms after the menu item was chosen\n",
                (long long)std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now()
                                                                                 - chosen)
                    .count());
    const std::string window = firstWindowNamed("Quilo Preferences");
    keepScreenRegion(windowFrame(window), "preferences-from-menu.png");
    ASSERT_EQ(std::system(("xdotool windowfocus --sync " + window).c_str()), 0);

    const auto autostartEntries = [this] {
        std::vector<std::string> entries;
        if (fs::exists(config() / "autostart"))
            for (const auto& file : fs::directory_iterator(config() / "autostart"))
                entries.push_back(readFileText(file.path()));
        return entries;
    };
    pressKey("space"); // the first control, launch at login, has the focus
    ASSERT_TRUE(waitUntil([&] { return autostartEntries().size() == 1; }, 10)) << quilo->log();
    EXPECT_NE(autostartEntries()[0].find(QUILO_BINARY), std::string::npos) << autostartEntries()[0];
    pressKey("space");
    EXPECT_TRUE(waitUntil([&] { return autostartEntries().empty(); }, 10));
}

// The hot keys run their jobs whichever window has the focus: the factory
// two, and Save as ICNS Files' once it is switched on.
TEST_F(TrayApplication, HotKeysRunTheirJobsWhileAnotherWindowHasTheFocus)
{
    const QVariantMap hotKeys{
        {RTZHotKey_CreateThumbnails, HotKeysController::hotKeyDictForKey(17, cmdKey + shiftKey, true)},
        {RTZHotKey_RestoreThumbnails, HotKeysController::hotKeyDictForKey(17, cmdKey + optionKey + shiftKey, true)},
        {RTZHotKey_SaveAsICNS, HotKeysController::hotKeyDictForKey(17, cmdKey + controlKey, true)}};
    defaults().setObject(hotKeys, RTZHotKeysKey);
    defaults().synchronize();
    auto quilo = startQuilo();
    ASSERT_TRUE(quilo->waitForLog("Hello from Quilo")) << quilo->log();
    ChildProgram other({"xlogo", "-geometry", "200x200+100+100"}, log("xlogo"), environment());
    std::string window;
    ASSERT_TRUE(waitUntil([&] { return !(window = firstWindowNamed("xlogo")).empty(); }, 10));
    ASSERT_EQ(std::system(("xdotool windowfocus --sync " + window).c_str()), 0);

    const fs::path file = picture("hot key.jpg");
    copyFiles({file});
    // A job refuses to start while another runs, so each is let finish:
    // its progress window closes.
    pressKey("super+shift+t");
    ASSERT_TRUE(waitUntil([&] { return hasCustomIcon(file); }, 30)) << quilo->log();
    ASSERT_TRUE(waitUntil([] { return !windowShown("Creating Thumbnails..."); }, 30));

    // Command + option + shift + T: Restore Thumbnails.
    pressKey("super+alt+shift+t");
    EXPECT_TRUE(waitUntil([&] { return !hasCustomIcon(file); }, 30)) << quilo->log();
    ASSERT_TRUE(waitUntil([] { return !windowShown("Restoring Thumbnails..."); }, 30));

    pressKey("super+ctrl+t");
    const std::string panel = "Where would you like to save your new .icns files?";
    ASSERT_TRUE(waitUntil([&] { return windowShown(panel); }, 30)) << quilo->log();
    ASSERT_EQ(std::system(("xdotool windowfocus --sync " + firstWindowNamed(panel) + " key Escape").c_str()), 0);
    EXPECT_TRUE(quilo->waitForLog("Canceled creating ICNS files.")) << quilo->log();
}

// Started before the tray (at login), Quilo opens its preferences, which say
// why the menu is missing, and shows its icon once the tray is up.
TEST_F(TrayApplication, IconAppearsWhenTheTrayStartsAfterQuilo)
{
    auto quilo = startQuilo();
    ASSERT_TRUE(quilo->waitForLog("No system tray yet")) << quilo->log();
    ASSERT_TRUE(waitUntil([] { return windowShown("Quilo Preferences"); }, 10));
    keepScreenRegion(windowFrame(firstWindowNamed("Quilo Preferences")), "preferences-without-tray.png");
    auto tray = startTray();
    const auto icon = waitForDockedIcon(20);
    ASSERT_TRUE(icon) << quilo->log();
    EXPECT_TRUE(openMenu(*icon));
}

// The check for updates at launch runs only when it is switched on.
TEST_F(TrayApplication, UpdateCheckAtLaunchOnlyWhenSwitchedOn)
{
    {
        // Launching has finished once a second start reaches this one, and
        // the check's thread would have been started by then.
        auto quilo = startQuilo({}, "without-check");
        ASSERT_TRUE(quilo->waitForLog("Hello from Quilo")) << quilo->log();
        ASSERT_EQ(startQuilo({}, "second")->waitForExit(), std::optional(0));
        ASSERT_TRUE(quilo->waitForLog("Quilo was started again")) << quilo->log();
        EXPECT_EQ(quilo->log().find("hecking for updates"), std::string::npos) << quilo->log();
    }
    defaults().setBool(true, RTZCheckForUpdatesAtLaunchKey);
    defaults().synchronize();
    auto quilo = startQuilo({}, "with-check");
    // A build without the maker's site says why it asks nobody.
    const char* started = updateDocumentURL().isEmpty() ? "Not checking for updates" : "Checking for updates...";
    EXPECT_TRUE(quilo->waitForLog(started)) << quilo->log();
}

// A file manager's entry, and a second start, reach the Quilo that runs:
// the second start brings its preferences up.
TEST_F(TrayApplication, RequestsGoToTheRunningQuilo)
{
    auto tray = startTray();
    auto quilo = startQuilo();
    ASSERT_TRUE(waitForDockedIcon()) << quilo->log();
    const fs::path file = picture("from the file manager.jpg");

    auto request = startQuilo({"request", "create-thumbnails", file.string()}, "request");
    EXPECT_EQ(request->waitForExit(), std::optional(0)) << request->log();
    EXPECT_TRUE(quilo->waitForLog("Processing " + file.string())) << quilo->log();
    EXPECT_TRUE(waitUntil([&] { return hasCustomIcon(file); }, 30));

    auto second = startQuilo({}, "second");
    EXPECT_EQ(second->waitForExit(), std::optional(0));
    EXPECT_EQ(second->log(), "Quilo is already running in this session.\n");
    EXPECT_TRUE(waitUntil([] { return windowShown("Quilo Preferences"); }, 10)) << quilo->log();
    EXPECT_TRUE(quilo->running());
}

// With no Quilo running, a file manager's entry starts one for its job.
TEST_F(TrayApplication, RequestStartsQuiloWhenNoneRuns)
{
    const fs::path file = picture("first of the day.jpg");
    auto request = startQuilo({"request", "create-thumbnails", file.string()}, "request");
    EXPECT_EQ(request->waitForExit(20'000), std::optional(0)) << request->log();
    EXPECT_TRUE(waitUntil([&] { return hasCustomIcon(file); }, 30));

    // The Quilo started for it stays, in the tray; its lock file names it.
    fs::path lock;
    for (const auto& entry : fs::directory_iterator(runtime()))
        if (entry.path().extension() == ".lock")
            lock = entry.path();
    ASSERT_FALSE(lock.empty());
    const int pid = std::stoi(readFileText(lock));
    EXPECT_EQ(::kill(pid, 0), 0) << "the started Quilo is gone";
    ::kill(pid, SIGTERM);
}

} // namespace
} // namespace quilo
