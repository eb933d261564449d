#pragma once
#include "prefs/UpdateAlert.h"

#include <QMainWindow>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <memory>

class QAction;
class QLabel;
class QToolBar;

namespace Ui {
class PrefsWindow;
}

namespace quilo {

class HotKeysController;
class HotKeysPaneController;
class HotKeyWindow;
class UserDefaults;

inline const QString RTZPrefsGeneralIdentifier = QStringLiteral("General");
inline const QString RTZPrefsHotKeysIdentifier = QStringLiteral("HotKeys");
inline const QString RTZPrefsUpdateIdentifier = QStringLiteral("Update");
inline const QString RTZPrefsToolbar = QStringLiteral("Pref Toolbar");

// The preferences window ("PrefsWindow.ui"): a toolbar of three panes over a
// stack of them. General: launch at login and thumbnails for new icns files;
// HotKeys: the hot-key pane; Update: the check at launch and a check now.
// Every pane and the toolbar can be reached from the keyboard (PrefsKeyboard).
// The window is made the first time it is asked for. Main thread only.
class PrefsController final : public QObject {
    Q_OBJECT
public:
    PrefsController(UserDefaults& defaults, HotKeysController& hotKeys);
    PrefsController();
    ~PrefsController() override;

    // Shows the window in front of every other, with the keyboard focus.
    void showWindow();
    // One line at the foot of the window saying something of Quilo as a whole
    // (why its menu is missing); an empty text takes it away.
    void showNotice(const QString& text);
    QMainWindow& window();

    // The toolbar's delegate.
    QAction* toolbar(const QString& itemForItemIdentifier, bool willBeInsertedIntoToolbar);
    QStringList toolbarDefaultItemIdentifiers() const;
    QStringList toolbarSelectableItemIdentifiers() const;
    QStringList toolbarAllowedItemIdentifiers() const;

    void activateGeneralPane();
    void activateHotKeysPane();
    void activateUpdatePane();
    // The identifier of the pane on show.
    QString selectedPaneIdentifier() const;

    void readLoginItem();
    void launchAtLoginCheckbox();
    void checkForUpdatesNow();

    // Where the check-now button looks and how its alerts are shown; tests
    // point them elsewhere.
    void setUpdateDocumentURL(const QUrl& url) { updateDocumentURL_ = url; }
    void setAlertRunner(AlertRunner runAlert) { runAlert_ = std::move(runAlert); }

    HotKeysPaneController& hotKeysPane() { return *hotKeysPane_; }
    HotKeyWindow& hotKeyWindow() { return *hotKeyWindow_; }

private:
    void windowDidLoad();
    void setupToolbar();
    void selectToolbarItem(const QString& identifier);
    // The pane `step` places on from the one shown, wrapping round.
    void stepPane(int step);
    void selectTabViewItemWithIdentifier(const QString& identifier);

    UserDefaults& defaults_;
    HotKeysController& hotKeys_;
    std::unique_ptr<QMainWindow> window_;
    std::unique_ptr<Ui::PrefsWindow> ui_;
    QToolBar* toolbar_ = nullptr;
    QLabel* notice_ = nullptr;
    std::unique_ptr<HotKeysPaneController> hotKeysPane_;
    std::unique_ptr<HotKeyWindow> hotKeyWindow_;
    QUrl updateDocumentURL_;
    AlertRunner runAlert_;
};

} // namespace quilo
