#include "app/QuiloMain.h"

#include "app/QuiloController.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/QuiloApplication.h"
#include "resources/ImageNamed.h"

namespace quilo {

int quiloApplicationMain(int argc, char** argv)
{
    QuiloApplication application(argc, argv, [] {
        return std::make_unique<QuiloController>(UserDefaults::standardUserDefaults());
    });
    QApplication::setApplicationName(QStringLiteral("Quilo"));
    QApplication::setApplicationVersion(QString::fromLatin1(QuiloController::kApplicationVersion));
    QApplication::setWindowIcon(imageNamed(QStringLiteral("quilo.png")));
    // A tray application: closing the preferences or the About box ends nothing.
    QApplication::setQuitOnLastWindowClosed(false);
    return QApplication::exec();
}

} // namespace quilo
