#include "prefs/RTZUpdate.h"

#include "foundation/LocalizedStrings.h"
#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/StringWithFormat.h"
#include "prefs/PropertyListFetch.h"
#include "prefs/UpdateAlertBox.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDesktopServices>
#include <QThread>

namespace quilo {
namespace {

QString text(const char* key) { return localizedString(key, {}, "RTZUpdate"); }

// Values from the document go into log lines and alerts: no control
// character may split a line, and a long one is cut (laying out a megabyte
// would freeze the alert, and no screen could show it).
QString printable(const QString& value)
{
    constexpr qsizetype kLongest = 200;
    QString line = value.left(kLongest);
    for (QChar& c : line)
        if (c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line
            || c.category() == QChar::Separator_Paragraph)
            c = '?';
    return value.size() > kLongest ? line + "..." : line;
}

void logWithObjects(const char* format, QStringList objects)
{
    for (QString& object : objects)
        object = printable(object);
    logLine(stringWithFormat(format, objects).toStdString());
}

std::optional<QString> stringValue(const QVariantMap& map, const QString& key)
{
    const QVariant value = map.value(key);
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

// The platform's URL opener belongs to the GUI thread; the automatic check
// runs on a thread of its own and need not wait for the browser.
void openInBrowser(const QUrl& address)
{
    QCoreApplication* application = QCoreApplication::instance();
    if (application && QThread::currentThread() != application->thread())
        QMetaObject::invokeMethod(
            application, [address] { QDesktopServices::openUrl(address); }, Qt::QueuedConnection);
    else
        QDesktopServices::openUrl(address);
}

} // namespace

std::unique_ptr<RTZUpdate> RTZUpdate::updateForApplication(const QString& application, const QUrl& atURL,
                                                           UserDefaults& defaults)
{
    return std::make_unique<RTZUpdate>(application, atURL, defaults);
}

RTZUpdate::RTZUpdate(const QString& application, const QUrl& atURL, UserDefaults& defaults)
    : application_(application)
    , dictURL_(atURL)
    , defaults_(defaults)
{
    setAlertRunner({});
}

void RTZUpdate::setAlertRunner(AlertRunner runAlert)
{
    if (!runAlert)
        runAlert = [this](const UpdateAlert& alert) { return runUpdateAlertBox(alert, stop_); };
    runAlert_ = std::move(runAlert);
}

void RTZUpdate::checkForUpdates(bool userInitiated, const QString& runningAppVersion, const QString& autoCheckKey,
                                const QString& lastCheckKey, [[maybe_unused]] bool sheetModal)
{
    if (dictURL_.isEmpty()) {
        logLine("Not checking for updates: this Quilo was built without the maker's web site.");
        return;
    }
    logLine("Checking for updates...");
    const Published published = fetchPublished();
    if (stopped())
        return;
    if (published.latest == runningAppVersion) {
        reportUpToDate(userInitiated, *published.latest);
    } else if (!published.latest) {
        // Every failure ends here, told apart from none, and leaves neither
        // the date of a check nor the notification that one finished.
        logLine("Check for updates timed out.");
        return;
    } else {
        offerUpdate(userInitiated, published, autoCheckKey);
    }
    if (stopped())
        return;
    logLastCheckedDate(lastCheckKey);
    broadcastFinishedCheckingForUpdates();
}

RTZUpdate::Published RTZUpdate::fetchPublished() const
{
    Published published;
    QString cause;
    const auto document = propertyListWithContentsOfURL(dictURL_, timeout_, &cause, {}, stop_);
    if (stop_.stop_requested())
        return published;
    const QVariant entry = document && document->typeId() == QMetaType::QVariantMap
        ? document->toMap().value(application_)
        : QVariant();
    if (entry.typeId() == QMetaType::QVariantMap) {
        published.latest = stringValue(entry.toMap(), "Current Version");
        published.downloadURL = stringValue(entry.toMap(), "Download URL").value_or(QString());
    }
    if (!published.latest) {
        if (cause.isEmpty())
            cause = entry.isValid() ? "no \"Current Version\" string in its entry" : "no entry that is a dictionary";
        logWithObjects("No version of %@ from the update document at %@: %@",
                       {application_, dictURL_.toString(), cause});
    }
    return published;
}

// Quilo is quitting: what the check holds (the defaults, the notification
// centre, the GUI thread) is about to go.
bool RTZUpdate::stopped() const
{
    const bool stop = stop_.stop_requested();
    if (stop)
        logLine("Update check stopped: Quilo is quitting.");
    return stop;
}

void RTZUpdate::reportUpToDate(bool userInitiated, const QString& latest)
{
    logWithObjects("%@ is up-to-date.", {application_});
    // Only someone who asked hears that nothing is new.
    if (!userInitiated)
        return;
    runAlert_({stringWithFormat(text("Up-To-Date window title"), {application_}),
               stringWithFormat(text("Up-To-Date window body"), {application_, latest}), text("OK"), std::nullopt,
               std::nullopt});
}

void RTZUpdate::offerUpdate(bool userInitiated, const Published& published, const QString& autoCheckKey)
{
    const QString& latest = *published.latest;
    logWithObjects("%@ version %@ is available.", {application_, latest});
    UpdateAlert alert{text("Update Available window title"),
                      stringWithFormat(text("Update Available window body"), {application_, printable(latest)}),
                      text("Yes"),
                      std::nullopt, text("No")};
    // Turning the check off is offered only by the check that runs unasked.
    if (!userInitiated)
        alert.alternateButton = text("Don't Ask Again");
    switch (runAlert_(alert)) {
    case kAlertDefaultReturn:
        downloadUpdateWithURL(published.downloadURL);
        break;
    case kAlertAlternateReturn:
        disableAutoCheckWithKey(autoCheckKey);
        break;
    default:
        break;
    }
}

void RTZUpdate::downloadUpdateWithURL(const QString& url)
{
    if (url.isEmpty())
        return;
    const QUrl address(url);
    if (!isWebAddress(address)) {
        logFormat("Ignoring a download address that is not http or https: %s", printable(url).toUtf8().constData());
        return;
    }
    openInBrowser(address);
}

void RTZUpdate::disableAutoCheckWithKey(const QString& key) { defaults_.setBool(false, key); }

void RTZUpdate::logLastCheckedDate(const QString& key) { defaults_.setObject(QDateTime::currentDateTime(), key); }

void RTZUpdate::broadcastFinishedCheckingForUpdates()
{
    NotificationCenter::defaultCenter().postNotificationName(RTZUpdateFinishedCheckingNotification);
}

} // namespace quilo
