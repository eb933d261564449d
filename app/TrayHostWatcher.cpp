#include "app/TrayHostWatcher.h"

#include "foundation/Log.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusServiceWatcher>
#include <QGuiApplication>

#include <xcb/xcb.h>

namespace quilo {
namespace {

const QString kWatcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
constexpr int kXEmbedPollMilliseconds = 500;

// The tray's screen is the display's default one: ":0.1" names screen 1.
int defaultScreenNumber()
{
    const QByteArray display = qgetenv("DISPLAY");
    const qsizetype dot = display.lastIndexOf('.');
    const qsizetype colon = display.lastIndexOf(':');
    return dot > colon ? display.mid(dot + 1).toInt() : 0;
}

} // namespace

TrayHostWatcher::TrayHostWatcher(QObject* parent)
    : QObject(parent)
{
    xembedPoll_.setInterval(kXEmbedPollMilliseconds);
    connect(&xembedPoll_, &QTimer::timeout, this, &TrayHostWatcher::checkAgain);
}

bool TrayHostWatcher::trayHostAvailable() { return statusNotifierHostRegistered() || xembedTrayPresent(); }

bool TrayHostWatcher::waitForHost()
{
    if (trayHostAvailable()) {
        QMetaObject::invokeMethod(this, &TrayHostWatcher::checkAgain, Qt::QueuedConnection);
        return true;
    }
    logLine("No system tray yet; Quilo's item appears when one starts.");
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        watcher_ = new QDBusServiceWatcher(kWatcherService, bus, QDBusServiceWatcher::WatchForRegistration, this);
        connect(watcher_, &QDBusServiceWatcher::serviceRegistered, this, &TrayHostWatcher::checkAgain);
    }
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        xembedPoll_.start();
    return false;
}

void TrayHostWatcher::checkAgain()
{
    if (announced_ || !trayHostAvailable())
        return;
    announced_ = true;
    xembedPoll_.stop();
    emit hostAvailable();
}

bool TrayHostWatcher::statusNotifierHostRegistered()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(kWatcherService))
        return false;
    QDBusInterface watcher(kWatcherService, QStringLiteral("/StatusNotifierWatcher"), kWatcherService, bus);
    return watcher.property("IsStatusNotifierHostRegistered").toBool();
}

bool TrayHostWatcher::xembedTrayPresent()
{
    auto* x11 = qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
    xcb_connection_t* connection = x11 ? x11->connection() : nullptr;
    if (!connection) // the offscreen platform answers for X11 without a connection
        return false;
    const QByteArray name = "_NET_SYSTEM_TRAY_S" + QByteArray::number(defaultScreenNumber());
    xcb_intern_atom_reply_t* atom
        = xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 1, std::uint16_t(name.size()), name.constData()), nullptr);
    if (!atom)
        return false;
    const xcb_atom_t selection = atom->atom;
    free(atom);
    if (selection == XCB_ATOM_NONE)
        return false;
    xcb_get_selection_owner_reply_t* owner
        = xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr);
    const bool present = owner && owner->owner != XCB_WINDOW_NONE;
    free(owner);
    return present;
}

} // namespace quilo
