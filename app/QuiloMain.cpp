#include "app/QuiloMain.h"

#include "app/InstanceClient.h"
#include "app/InstanceServer.h"
#include "app/QuiloController.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/QuiloApplication.h"
#include "resources/ImageNamed.h"

#include <cstdio>
#include <cstdlib>

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

} // namespace

bool displayAvailable()
{
    return std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY") || std::getenv("QT_QPA_PLATFORM");
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
    server.setBusyCheck([controller] { return controller->isRunningAJob(); });
    QObject::connect(&server, &InstanceServer::runJobRequested, controller, &QuiloController::startThumbActionForFiles);
    QObject::connect(&server, &InstanceServer::activateRequested, controller, &QuiloController::showRunning);
    return QApplication::exec();
}

} // namespace quilo
