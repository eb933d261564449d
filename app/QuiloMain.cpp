#include "app/QuiloMain.h"

#include "app/InstanceClient.h"
#include "app/InstanceServer.h"
#include "app/QuiloController.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/QuiloApplication.h"
#include "resources/ImageNamed.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <xcb/xcb.h>

namespace quilo {
namespace {

void describeApplication()
{
    QApplication::setApplicationName(QStringLiteral("Quilo"));
    QApplication::setApplicationVersion(QString::fromLatin1(QuiloController::kApplicationVersion));
    QApplication::setWindowIcon(imageNamed(QStringLiteral("quilo.png")));
    // A tray application: closing the preferences or the About box ends nothing.
    QApplication::setQuitOnLastWindowClosed(false);
}

// A second start hands over to the first, which shows that it runs.
int handOverToFirstInstance()
{
    if (handOverToRunningInstance(InstanceRequest::activate())) {
        std::fprintf(stderr, "Quilo is already running in this session.\n");
        return 0;
    }
    std::fprintf(stderr, "Quilo could not start: another Quilo holds this session and does not answer.\n");
    return 1;
}

bool xServerAnswers(const char* display)
{
    xcb_connection_t* connection = xcb_connect(display, nullptr);
    const bool answers = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return answers;
}

} // namespace

bool displayAvailable()
{
    const char* platform = std::getenv("QT_QPA_PLATFORM");
    if (platform && std::strncmp(platform, "xcb", 3) != 0)
        return true; // offscreen, Wayland: Qt opens what it is told to
    if (!platform && std::getenv("WAYLAND_DISPLAY"))
        return true;
    // An X server that is named but gone is as fatal to Qt as none.
    const char* display = std::getenv("DISPLAY");
    return display && xServerAnswers(display);
}

int quiloApplicationMain(int argc, char** argv)
{
    if (!displayAvailable()) {
        std::fprintf(stderr, "quilo: no display to show the tray application on; "
                             "'quilo --help' lists the commands that need none\n");
        return 1;
    }
    QuiloController* controller = nullptr;
    QuiloApplication application(argc, argv, [&controller] {
        auto made = std::make_unique<QuiloController>(UserDefaults::standardUserDefaults());
        controller = made.get();
        return made;
    });
    describeApplication();

    const auto address = InstanceAddress::forThisSession();
    if (!address)
        return 1;
    InstanceServer server(*address);
    if (!server.listen())
        return handOverToFirstInstance();
    QObject::connect(&server, &InstanceServer::runJobRequested, controller, &QuiloController::startThumbActionForFiles);
    QObject::connect(&server, &InstanceServer::activateRequested, controller, &QuiloController::showRunning);
    return QApplication::exec();
}

} // namespace quilo
