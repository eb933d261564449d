// The tray application run as a person runs it: the real quilo program and a
// real tray host on the test's X server; the person clicks the tray icon,
// presses hot keys and copies files in another program.
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "tests/desktop/TrayDesktop.h"
#include "tests/support/TemporaryDirectory.h"

#include <QUrl>

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

    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("HOME", QString::fromStdString(home_.path().string()));
        environment.insert("XDG_CONFIG_HOME", QString::fromStdString(config().string()));
        environment.insert("XDG_RUNTIME_DIR", QString::fromStdString(runtime().string()));
        environment.insert("QT_QPA_PLATFORM", "xcb");
        // The XEmbed tray of the test, not a StatusNotifierItem host elsewhere.
        environment.remove("DBUS_SESSION_BUS_ADDRESS");
        return environment;
    }

    std::unique_ptr<ChildProgram> startQuilo(const QStringList& arguments = {}, const std::string& logName = "quilo")
    {
        return std::make_unique<ChildProgram>(QUILO_BINARY, arguments, environment(), log(logName));
    }

    std::unique_ptr<ChildProgram> startTray()
    {
        auto tray = std::make_unique<ChildProgram>(
            "trayer",
            QStringList{"--edge", "top", "--align", "right", "--widthtype", "request", "--height", "24",
                        "--transparent", "false", "--tint", "0xdddddd", "--SetDockType", "false"},
            environment(), log("trayer"));
        EXPECT_TRUE(ChildProgram::waitUntil([] { return !firstWindowNamed("panel").empty(); }, 20));
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
        ChildProgram::waitUntil([&] { return (icon = dockedIcon()).has_value(); }, seconds);
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
    clickAt(icon->frame.center());
    ASSERT_TRUE(ChildProgram::waitUntil([] { return !xWindowsNamed("Quilo menu").empty(); }, 10));
    keepScreenRegion(QRect(icon->frame.left() - 260, 0, 300, 260), "tray-menu.png");

    pressKey("Down Return");
    ASSERT_TRUE(ChildProgram::waitUntil([&] { return hasCustomIcon(first) && hasCustomIcon(second); }, 30))
        << quilo->log();
    EXPECT_TRUE(quilo->waitForLog("Processing " + first.string()));
}

} // namespace
} // namespace quilo
