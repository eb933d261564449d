// The preferences window on a real X server, used as a person uses it:
// controls found by their accessible names, clicked and typed at through
// the X server. The hot keys are real key grabs, so a capture shows that
// they are let go while it runs and taken again after it. Screenshots of
// the panes and of the capture panel go to the build's test artefacts.
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
    keepScreenshot(&prefs_->window(), "preferences-hotkeys.png");

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

// Restore Thumbnails gets a new hot key: Create Thumbnails' combination,
// pressed while capturing, reaches the panel instead of running and is
// refused; a free one is accepted, stored and grabbed at once.
TEST_F(PrefsWindowOnX, ACapturedHotKeyIsRefusedWhenTakenAndWorksAtOnceWhenFree)
{
    showPane(RTZPrefsHotKeysIdentifier);
    auto* table = static_cast<QTableView*>(control("Hot keys"));
    HotKeyWindow* panel = &prefs_->hotKeyWindow();
    actAsUser([&] {
        QPoint restoreRow;
        onGui([&] {
            const QRect cell = table->visualRect(table->model()->index(1, 1));
            restoreRow = table->viewport()->mapToGlobal(cell.center());
        });
        clickAt(restoreRow);
        click(control(QString::fromUtf8("Set Hot Key…")));
        ASSERT_TRUE(eventually([&] { return panel->isVisible(); }, 10));
        focusWindow(panel);
        EXPECT_EQ(panel->title(), QStringLiteral("Press a hot key for \"Restore Thumbnails\""));

        pressKey("super+shift+t");
        EXPECT_TRUE(eventually([&] { return panel->keyComboText() == QString::fromUtf8("⌘⇧ T (In Use)"); }, 10));
        EXPECT_FALSE(panel->okEnabled());
        keepScreenshot(panel, "capture-panel-in-use.png");

        pressKey("super+shift+r");
        EXPECT_TRUE(eventually([&] { return panel->keyComboText() == QString::fromUtf8("⌘⇧ R"); }, 10));
        EXPECT_TRUE(panel->okEnabled());
        keepScreenshot(panel, "capture-panel-accepted.png");
        click(control("OK", panel));
        EXPECT_TRUE(eventually([&] { return !panel->isVisible(); }, 10));
    });
    EXPECT_TRUE(pressedHotKeys_.empty()) << "no hot key ran during the capture";
    EXPECT_EQ(hotKeys().keyComboForKeyKey(RTZHotKey_RestoreThumbnails), KeyCombo(15, 0x0300));
    EXPECT_EQ(static_cast<QLabel*>(control("Hot key"))->text(), QString::fromUtf8("⌘⇧ R"));

    actAsUser([&] {
        pressKey("super+shift+r");
        pressKey("super+shift+t");
        eventually([&] { return pressedHotKeys_.size() >= 2; }, 10);
    });
    EXPECT_EQ(pressedHotKeys_, (std::vector<QString>{RTZHotKey_RestoreThumbnails, RTZHotKey_CreateThumbnails}));
}

} // namespace
} // namespace quilo
