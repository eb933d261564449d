#pragma once
#include "foundation/QuiloKeys.h"
#include "hotkeys/QuiloApplication.h"
#include "jobs/ClipboardSelection.h"
#include "jobs/HandedOverSelection.h"

#include <QMenu>
#include <QObject>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <stop_token>
#include <thread>

class QAction;

namespace quilo {

class CreatingThumbnailsController;
class HotKeysController;
struct Notification;
class PrefsController;
class StatusItem;
class UserDefaults;
class WindowJobInterface;

// The application's delegate: the factory defaults, the tray item and its
// menu, the three actions from the menu, hot keys and file-manager requests,
// the update check at launch, About, Donate and Quit.
class QuiloController final : public QObject, public ApplicationDelegate {
    Q_OBJECT
public:
    static constexpr const char* kApplicationVersion = quilo::kApplicationVersion;

    explicit QuiloController(UserDefaults& defaults);
    ~QuiloController() override;

    void applicationDidFinishLaunching() override;
    void showStatusItem();
    // No item is ever disabled, not even while a job runs.
    bool validateMenuItem(const QAction* menuItem) const;
    void handleHotKeyEvent(const Notification& notification);
    void startThumbActionForType(int kind);
    // A file-manager request: the job runs on the files it handed over.
    void startThumbActionForFiles(int kind, const QStringList& paths);
    // A file manager's job is turned down meanwhile.
    bool isRunningAJob() const;
    // Another start of Quilo in this session (an app-menu launcher clicked
    // again): the preferences come to the front.
    void showRunning();
    // The check at launch, on a thread of its own: its fetch blocks. Quitting
    // stops it and waits for it.
    void checkForUpdatesInTheBackground();
    void checkForUpdates(std::stop_token stop = {});
    void setUpdateDocumentURL(const QUrl& url) { updateDocumentURL_ = url; }

    void menuCreateThumbs();
    void menuSaveAsICNS();
    void menuRestoreThumbs();
    void menuShowPrefs();
    void menuAboutQuilo();
    void menuQuit();
    void donateButton();

    QMenu& menu() { return theMenu_; }
    StatusItem* statusItem() const { return theStatusItem_.get(); }
    CreatingThumbnailsController* creatingThumbnailsWindow() const { return creatingThumbnailsWindow_.get(); }

private:
    void createJobDriverIfNeeded();
    void buildMenu();
    QAction* addMenuItem(const QString& title, void (QuiloController::*action)());

    UserDefaults& defaults_;
    ClipboardSelection clipboard_;
    HandedOverSelection selection_{clipboard_};
    std::unique_ptr<WindowJobInterface> jobInterface_;
    std::unique_ptr<CreatingThumbnailsController> creatingThumbnailsWindow_;
    std::unique_ptr<PrefsController> prefsWindow_;
    HotKeysController& hotKeysController_;
    std::unique_ptr<StatusItem> theStatusItem_;
    QMenu theMenu_;
    QAction* menuCreateThumbs_ = nullptr;
    QAction* menuRestoreThumbs_ = nullptr;
    QAction* menuSaveAsICNS_ = nullptr;
    QUrl updateDocumentURL_;
    std::jthread updateCheck_;
};

} // namespace quilo
