// The preferences window on a real X server, used as a person uses it:
// controls found by their accessible names, clicked and typed at through the
// X server, and read as a screen reader reads them (AT-SPI). The hot keys are
// real key grabs, so a capture shows that they are let go while it runs and
// taken again after it. Screenshots of the panes and of the capture panel,
// taken from the screen, go to the build's test artefacts.
#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/HotKeyWindow.h"
#include "hotkeys/HotKeysController.h"
#include "prefs/PrefsController.h"
#include "tests/desktop/DesktopUser.h"

#include <QAccessible>
#include <QLabel>
#include <QTableView>

namespace quilo {
namespace {

using namespace quilo::test;

// What assistive technology calls the widget.
QString accessibleName(QWidget* widget)
{
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
    return accessible ? accessible->text(QAccessible::Name) : QString();
}

class PrefsWindowOnX : public ::testing::Test {
protected:
    PrefsWindowOnX()
    {
        onGui([this] {
            UserDefaults& defaults = UserDefaults::standardUserDefaults();
            defaults.registerDefaults(booleanFactoryDefaults());
            defaults.registerDefaults({{RTZHotKeysKey, hotKeys().defaultHotKeysDict()}});
            hotKeys().registerHotKeys();
            prefs_ = std::make_unique<PrefsController>(defaults, hotKeys());
            prefs_->showWindow();
        });
        EXPECT_TRUE(eventually([this] { return prefs_->window().isVisible(); }));
        actAsUser([this] { focusWindow(&prefs_->window()); });
        NotificationCenter::defaultCenter().addObserver(this, "RTZHotKeyPressed", [this](const Notification& n) {
            pressedHotKeys_.push_back(n.userInfo.value("KeyDescription").toString());
        });
    }
    ~PrefsWindowOnX() override
    {
        NotificationCenter::defaultCenter().removeObserver(this);
        onGui([this] { prefs_.reset(); });
    }

    static HotKeysController& hotKeys() { return HotKeysController::sharedInstance(); }

    // The visible control of the window with that accessible name.
    QWidget* control(const QString& name, QWidget* window = nullptr)
    {
        QWidget* found = nullptr;
        onGui([&] {
            QWidget* root = window ? window : &prefs_->window();
            for (QWidget* widget : root->findChildren<QWidget*>())
                if (widget->isVisible() && accessibleName(widget) == name)
                    found = widget;
        });
        EXPECT_NE(found, nullptr) << "no control named " << name.toStdString();
        return found;
    }

    void showPane(const QString& identifier)
    {
        actAsUser([&] {
            click(control(identifier));
            EXPECT_TRUE(eventually([&] { return prefs_->selectedPaneIdentifier() == identifier; }, 10));
        });
    }

    std::unique_ptr<PrefsController> prefs_;
    std::vector<QString> pressedHotKeys_;
};

TEST_F(PrefsWindowOnX, TheToolbarSwitchesPanesAndTheirSwitchesSetTheDefaults)
{
    EXPECT_EQ(prefs_->selectedPaneIdentifier(), RTZPrefsGeneralIdentifier);
    control("Launch Quilo at login");
    control("Create thumbnails for new icns files");
    keepScreenshot(&prefs_->window(), "preferences-general.png");

    showPane(RTZPrefsHotKeysIdentifier);
    control("Hot keys");
    control(QString::fromUtf8("Set Hot Key…"));

    showPane(RTZPrefsUpdateIdentifier);
    control("Check Now");
    keepScreenshot(&prefs_->window(), "preferences-update.png");
    actAsUser([&] {
        click(control("Check for updates at launch"));
        EXPECT_TRUE(eventually(
            [] { return !UserDefaults::standardUserDefaults().boolForKey(RTZCheckForUpdatesAtLaunchKey); }, 10));
    });

    showPane(RTZPrefsGeneralIdentifier);
}

// From the keyboard alone: Ctrl+Tab and Ctrl+PgDown forward, Ctrl+Shift+Tab
// and Ctrl+PgUp back, wrapping round; Tab reaches the toolbar, whose arrows
// change the pane; Escape and Ctrl+W close the window.
TEST_F(PrefsWindowOnX, TheKeyboardChangesPanesAndClosesTheWindow)
{
    const struct {
        const char* keys;
        QString pane;
    } steps[] = {{"ctrl+Tab", RTZPrefsHotKeysIdentifier},      {"ctrl+Next", RTZPrefsUpdateIdentifier},
                 {"ctrl+Tab", RTZPrefsGeneralIdentifier},      {"ctrl+shift+Tab", RTZPrefsUpdateIdentifier},
                 {"ctrl+Prior", RTZPrefsHotKeysIdentifier}};
    actAsUser([&] {
        for (const auto& step : steps) {
            pressKey(step.keys);
            EXPECT_TRUE(eventually([&] { return prefs_->selectedPaneIdentifier() == step.pane; }, 10)) << step.keys;
        }
        QString focused;
        for (int presses = 0; presses < 12 && !focused.startsWith("QToolButton"); ++presses) {
            pressKey("Tab");
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            onGui([&] {
                const QWidget* widget = QApplication::focusWidget();
                focused = widget ? widget->metaObject()->className() : "";
            });
        }
        ASSERT_EQ(focused, "QToolButton") << "Tab never reached the toolbar";
        pressKey("Right");
        EXPECT_TRUE(eventually([&] { return prefs_->selectedPaneIdentifier() == RTZPrefsUpdateIdentifier; }, 10));
        for (const char* close : {"Escape", "ctrl+w"}) {
            pressKey(close);
            EXPECT_TRUE(eventually([&] { return !prefs_->window().isVisible(); }, 10)) << close;
            onGui([&] { prefs_->showWindow(); });
            focusWindow(&prefs_->window());
        }
    });
}

// Restore Thumbnails gets a new hot key. Refused, each with a beep, red text
// and OK disabled: a plain key, Return while OK is disabled, a key no
// combination can name, another action's combination, even switched off, or
// Create Thumbnails' (which reaches the panel instead of running). A screen reader reads the prompt and the
// combination themselves. Return takes a free one, which is stored and
// grabbed at once; Escape cancels the next capture. Keys arrive as Mac key
// codes with Carbon modifiers, and go no further.
TEST_F(PrefsWindowOnX, TheCapturePanelTakesOnlyAFreeCombinationWithAModifier)
{
    showPane(RTZPrefsHotKeysIdentifier);
    auto* table = static_cast<QTableView*>(control("Hot keys"));
    HotKeyWindow* panel = &prefs_->hotKeyWindow();
    const auto capture = [&] {
        QPoint restoreRow;
        onGui([&] {
            const QRect cell = table->visualRect(table->model()->index(1, 1));
            restoreRow = table->viewport()->mapToGlobal(cell.center());
        });
        clickAt(restoreRow);
        click(control(QString::fromUtf8("Set Hot Key…")));
        ASSERT_TRUE(eventually([&] { return panel->isVisible(); }, 10));
        focusWindow(panel);
    };
    const auto shows = [&](const char* text) {
        return eventually([&] { return panel->keyComboText() == QString::fromUtf8(text); }, 10);
    };
    actAsUser([&] {
        capture();
        EXPECT_EQ(panel->title(), QStringLiteral("Press a hot key for \"Restore Thumbnails\""));
        const struct {
            const char* keys;
            const char* shown;
        } refused[] = {{"a", "A (Needs a Modifier)"},
                       {"Return", "Return (Needs a Modifier)"},
                       {"space", "Space (Needs a Modifier)"},
                       {"shift+BackSpace", "⇧ Backspace (Needs a Modifier)"},
                       {"ctrl+Print", "^ Print (Cannot Be a Hot Key)"},
                       {"super+ctrl+t", "⌘^ T (In Use)"}, // Save as ICNS Files', switched off
                       {"super+shift+t", "⌘⇧ T (In Use)"}};
        for (const auto& key : refused) {
            pressKey(key.keys);
            EXPECT_TRUE(shows(key.shown)) << key.keys << " shows " << panel->keyComboText().toStdString();
            EXPECT_FALSE(panel->okEnabled()) << key.keys;
            EXPECT_TRUE(panel->isVisible()) << key.keys;
            if (std::string(key.keys) == "Return")
                keepScreenshot(panel, "capture-panel-refusing-return.png");
        }
        const std::string read = screenReaderReads();
        std::printf("A screen reader reads the capture panel:\n%s", read.c_str());
        EXPECT_NE(read.find("label | Press a hot key for \"Restore Thumbnails\""), std::string::npos) << read;
        EXPECT_NE(read.find("label | ⌘⇧ T (In Use)"), std::string::npos) << read;

        pressKey("super+alt+shift+t");
        EXPECT_TRUE(shows("⌘⌥⇧ T")) << "its own combination is no conflict";
        EXPECT_TRUE(panel->okEnabled());
        pressKey("Caps_Lock super+shift+r Caps_Lock");
        EXPECT_TRUE(shows("⌘⇧ R")) << "caps lock is no modifier";
        EXPECT_TRUE(panel->okEnabled());
        keepScreenshot(panel, "capture-panel-accepted.png");
        pressKey("Return");
        EXPECT_TRUE(eventually([&] { return !panel->isVisible(); }, 10));
        const std::string pane = screenReaderReads();
        EXPECT_NE(pane.find("label | Restore Thumbnails | Action"), std::string::npos) << pane;
        EXPECT_NE(pane.find("label | ⌘⇧ R | Hot key"), std::string::npos) << pane;
        keepScreenshot(&prefs_->window(), "preferences-hotkeys-named.png");

        capture();
        pressKey("super+alt+r");
        EXPECT_TRUE(shows("⌘⌥ R"));
        pressKey("Escape");
        EXPECT_TRUE(eventually([&] { return !panel->isVisible(); }, 10));
    });
    EXPECT_TRUE(pressedHotKeys_.empty()) << "no hot key ran during the capture";
    EXPECT_EQ(hotKeys().keyComboForKeyKey(RTZHotKey_RestoreThumbnails), KeyCombo(15, 0x0300));

    actAsUser([&] {
        pressKey("super+shift+r");
        pressKey("super+shift+t");
        eventually([&] { return pressedHotKeys_.size() >= 2; }, 10);
    });
    EXPECT_EQ(pressedHotKeys_, (std::vector<QString>{RTZHotKey_RestoreThumbnails, RTZHotKey_CreateThumbnails}));
}

} // namespace
} // namespace quilo
