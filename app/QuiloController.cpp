#include "app/QuiloController.h"

#include "app/StatusItem.h"
#include "foundation/LocalizedStrings.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/HotKeysController.h"
#include "jobs/CreatingThumbnailsController.h"
#include "jobs/WindowJobInterface.h"
#include "prefs/MakersWebSite.h"
#include "prefs/PrefsController.h"
#include "prefs/RTZUpdate.h"
#include "resources/ImageNamed.h"

#include <QAction>
#include <QDesktopServices>
#include <QMessageBox>
#include <QSystemTrayIcon>

namespace quilo {

QuiloController::QuiloController(UserDefaults& defaults)
    : defaults_(defaults)
    , hotKeysController_(HotKeysController::sharedInstance())
    , updateDocumentURL_(updateDocumentURL())
{
    QVariantMap factoryDefaults = booleanFactoryDefaults();
    factoryDefaults.insert(RTZHotKeysKey, hotKeysController_.defaultHotKeysDict());
    defaults_.registerDefaults(factoryDefaults);
    buildMenu();
}

QuiloController::~QuiloController()
{
    // The check uses the defaults, the notification centre and this object,
    // which all go once Quilo has quit: it must end first.
    if (updateCheck_.joinable()) {
        updateCheck_.request_stop();
        updateCheck_.join();
    }
    NotificationCenter::defaultCenter().removeObserver(this);
    // Quitting during a job stops it after the file in hand, as Stop does,
    // rather than leaving an invisible Quilo to finish the selection.
    if (creatingThumbnailsWindow_)
        creatingThumbnailsWindow_->stopCreatingThumbnailsButton();
    creatingThumbnailsWindow_.reset(); // waits for that file; the job needs the window
}

void QuiloController::applicationDidFinishLaunching()
{
    logLine("Hello from Quilo");
    showStatusItem();
    createJobDriverIfNeeded();
    NotificationCenter::defaultCenter().addObserver(
        this, QStringLiteral("RTZHandleHotKeyEvent"),
        [this](const Notification& notification) { handleHotKeyEvent(notification); });
    hotKeysController_.registerHotKeys();
    if (defaults_.boolForKey(RTZCheckForUpdatesAtLaunchKey))
        checkForUpdatesInTheBackground();
}

void QuiloController::checkForUpdatesInTheBackground()
{
    updateCheck_ = std::jthread([this](std::stop_token stop) { checkForUpdates(std::move(stop)); });
}

// A request may come in before launching has finished.
void QuiloController::createJobDriverIfNeeded()
{
    if (creatingThumbnailsWindow_)
        return;
    jobInterface_ = std::make_unique<WindowJobInterface>();
    creatingThumbnailsWindow_ = std::make_unique<CreatingThumbnailsController>(*jobInterface_, selection_, defaults_);
    connect(&jobInterface_->window(), &CreatingThumbnailsWindow::stopRequested, this,
            [this] { creatingThumbnailsWindow_->stopCreatingThumbnailsButton(); });
}

// With no tray the menu is out of reach, so the preferences come up once and
// say why; the notice goes when a tray takes the item.
void QuiloController::showStatusItem()
{
    theStatusItem_ = std::make_unique<StatusItem>(imageNamed(QStringLiteral("quilopig16.tiff")), theMenu_);
    if (!theStatusItem_->waitingForTray())
        return;
    if (!prefsWindow_)
        prefsWindow_ = std::make_unique<PrefsController>(defaults_, hotKeysController_);
    // Before the window is shown, so it is made wide enough for the line.
    prefsWindow_->showNotice(
        localizedString(QStringLiteral("Quilo's menu is missing: no system tray is running yet.")));
    menuShowPrefs();
    connect(theStatusItem_.get(), &StatusItem::shown, this, [this] { prefsWindow_->showNotice({}); });
}

bool QuiloController::validateMenuItem(const QAction*) const { return true; }

void QuiloController::handleHotKeyEvent(const Notification& notification)
{
    const QString action = notification.object.toString();
    if (action == RTZHotKey_CreateThumbnails)
        startThumbActionForType(kCreateThumbnails);
    else if (action == RTZHotKey_RestoreThumbnails)
        startThumbActionForType(kRestoreThumbnails);
    else if (action == RTZHotKey_SaveAsICNS)
        startThumbActionForType(kSaveAsICNS);
}

void QuiloController::startThumbActionForType(int kind) { creatingThumbnailsWindow_->startThumbActionForType(kind); }

void QuiloController::startThumbActionForFiles(int kind, const QStringList& paths)
{
    createJobDriverIfNeeded();
    // The files must not wait for a later job from the menu.
    if (isRunningAJob()) {
        logLine("A job is running; the file manager's request is refused.");
        return;
    }
    selection_.handOver(paths);
    startThumbActionForType(kind);
}

bool QuiloController::isRunningAJob() const
{
    return creatingThumbnailsWindow_ && creatingThumbnailsWindow_->currentlyProcessing();
}

void QuiloController::showRunning()
{
    logLine("Quilo was started again: its preferences come to the front.");
    menuShowPrefs();
}

void QuiloController::checkForUpdates(std::stop_token stop)
{
    auto update = RTZUpdate::updateForApplication(QStringLiteral("Quilo"), updateDocumentURL_, defaults_);
    update->setStopToken(std::move(stop));
    update->checkForUpdates(false, QString::fromLatin1(kApplicationVersion), RTZCheckForUpdatesAtLaunchKey,
                            RTZLastCheckForUpdatesKey, false);
}

void QuiloController::menuCreateThumbs() { startThumbActionForType(kCreateThumbnails); }
void QuiloController::menuSaveAsICNS() { startThumbActionForType(kSaveAsICNS); }
void QuiloController::menuRestoreThumbs() { startThumbActionForType(kRestoreThumbnails); }

void QuiloController::menuShowPrefs()
{
    if (!prefsWindow_)
        prefsWindow_ = std::make_unique<PrefsController>(defaults_, hotKeysController_);
    prefsWindow_->showWindow();
}

void QuiloController::menuAboutQuilo()
{
    const QString site = QString::fromLatin1(kHomePage);
    QMessageBox::about(
        nullptr, localizedString(QStringLiteral("About Quilo")),
        QStringLiteral("<h3>Quilo</h3><p>%1</p><p>%2</p><p>%3</p><p><a href=\"%4\">%4</a></p>")
            .arg(localizedString(QStringLiteral("Gives picture files their own pictures as icons, takes them off "
                                                "again, and saves pictures as .icns files."))
                     .toHtmlEscaped(),
                 localizedString(QStringLiteral("Version %1")).arg(kApplicationVersion).toHtmlEscaped(),
                 localizedString(QStringLiteral("Copyright © 2026 the makers of Quilo")).toHtmlEscaped(),
                 site.toHtmlEscaped()));
}

void QuiloController::menuQuit() { QApplication::quit(); }

void QuiloController::donateButton()
{
    if (donationPageURL().isEmpty())
        logLine("No donation page: this Quilo was built without the maker's web site.");
    else
        QDesktopServices::openUrl(donationPageURL());
}

void QuiloController::buildMenu()
{
    // Named for assistive technology, and so people's tools can find it.
    theMenu_.setWindowTitle(QStringLiteral("Quilo menu"));
    theMenu_.setAccessibleName(theMenu_.windowTitle());
    menuCreateThumbs_ = addMenuItem(localizedString(RTZHotKey_CreateThumbnails, {}, QStringLiteral("Actions")),
                                    &QuiloController::menuCreateThumbs);
    menuRestoreThumbs_ = addMenuItem(localizedString(RTZHotKey_RestoreThumbnails, {}, QStringLiteral("Actions")),
                                     &QuiloController::menuRestoreThumbs);
    menuSaveAsICNS_ = addMenuItem(localizedString(RTZHotKey_SaveAsICNS, {}, QStringLiteral("Actions")),
                                  &QuiloController::menuSaveAsICNS);
    theMenu_.addSeparator();
    addMenuItem(localizedString(QStringLiteral("Preferences…")), &QuiloController::menuShowPrefs);
    addMenuItem(localizedString(QStringLiteral("About Quilo")), &QuiloController::menuAboutQuilo);
    addMenuItem(localizedString(QStringLiteral("Donate…")), &QuiloController::donateButton);
    theMenu_.addSeparator();
    addMenuItem(localizedString(QStringLiteral("Quit")), &QuiloController::menuQuit);
}

QAction* QuiloController::addMenuItem(const QString& title, void (QuiloController::*action)())
{
    QAction* item = theMenu_.addAction(title, this, action);
    item->setEnabled(validateMenuItem(item));
    return item;
}

} // namespace quilo
