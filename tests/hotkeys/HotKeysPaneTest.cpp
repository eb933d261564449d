// The HotKeys pane and its capture panel over a recording hot-key service:
// the table's answers and where a capture starts. Captures themselves, with
// real key presses, are tested on Xvfb.
#include "hotkeys/ApplicationTestsMain.h"
#include "hotkeys/HotKeyWindow.h"
#include "hotkeys/HotKeysController.h"
#include "hotkeys/HotKeysPaneController.h"

#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QTableView>

namespace quilo::test {
namespace {

class HotKeysPaneTest : public ::testing::Test {
protected:
    HotKeysPaneTest()
    {
        defaults.registerDefaults({{RTZHotKeysKey, controller.defaultHotKeysDict()}});
        controller.registerHotKeys();
        pane.awakeFromNib({panel.get(), &prefsWindow, table, label, description});
        gRegistrar->registrations.clear();
        gRegistrar->unregistered.clear();
    }

    QVariantMap record(const QString& name) const { return controller.hotKeysDict().value(name).toMap(); }

    TemporaryDirectory folder;
    UserDefaults defaults{QString::fromStdString((folder.path() / "Quilo.conf").string())};
    HotKeysController controller{QuiloApplication::sharedApplication(), defaults};
    QWidget prefsWindow;
    QTableView* table = new QTableView(&prefsWindow);
    QLabel* label = new QLabel(&prefsWindow);
    QLabel* description = new QLabel(&prefsWindow);
    std::unique_ptr<HotKeyWindow> panel = HotKeyWindow::init(&prefsWindow);
    HotKeysPaneController pane{controller};
};

TEST_F(HotKeysPaneTest, TheTableShowsTheThreeActionsAndSwitchesThemAtOnce)
{
    EXPECT_EQ(table->model()->rowCount(), 3);
    EXPECT_EQ(pane.tableView(HotKeysPaneController::kActionColumn, 2).toString(), RTZHotKey_SaveAsICNS);
    EXPECT_EQ(pane.tableView(HotKeysPaneController::kUseColumn, 0), QVariant(true));
    EXPECT_EQ(pane.tableView(HotKeysPaneController::kUseColumn, 2), QVariant(false));
    EXPECT_EQ(label->text(), RTZHotKey_CreateThumbnails) << "the first action is shown at first";
    EXPECT_EQ(description->text(), QString::fromUtf8("⌘⇧ T"));

    table->selectRow(2);
    EXPECT_EQ(label->text(), RTZHotKey_SaveAsICNS);
    EXPECT_EQ(description->text(), QString::fromUtf8("⌘^ T"));

    pane.tableView(QVariant(false), HotKeysPaneController::kActionColumn, 0);
    EXPECT_TRUE(gRegistrar->registrations.empty()) << "only the Use column takes a value";

    // A click on the checkbox, as the table delivers it.
    ASSERT_TRUE(table->model()->setData(table->model()->index(0, 0), Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_FALSE(record(RTZHotKey_CreateThumbnails).value("Use").toBool());
    EXPECT_EQ(controller.keyComboForKeyKey(RTZHotKey_CreateThumbnails), KeyCombo(17, 0x0300)) << "combination kept";
    ASSERT_EQ(gRegistrar->registrations.size(), 1u) << "registered again at once: only Restore is left on";
    EXPECT_EQ(gRegistrar->registrations[0].modifiers, 0x0B00);
}

TEST_F(HotKeysPaneTest, WithNoRowSelectedTheSetButtonTakesTheActionOnShow)
{
    table->selectRow(2);
    table->clearSelection();
    pane.setHotKeyButton();
    EXPECT_EQ(pane.keyChanging(), RTZHotKey_SaveAsICNS);
    panel->cancelButton();
}

TEST(HotKeyWindowTest, APanelWhoseContentsCannotBeReadIsLoggedAndNotMade)
{
    HotKeyWindow::setNibResource(QStringLiteral(":/no/such/HotKeyWindow.ui"));
    LogCapture log;
    EXPECT_EQ(HotKeyWindow::sharedPanel(), nullptr);
    HotKeyWindow::setNibResource(QStringLiteral(":/HotKeyWindow.ui"));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Failed to load HotKeyWindow nib file."}));
    EXPECT_NE(HotKeyWindow::sharedPanel(), nullptr) << "the next call tries again";
}

} // namespace
} // namespace quilo::test
