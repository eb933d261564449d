#include "prefs/PrefsController.h"

#include "foundation/LocalizedStrings.h"

namespace quilo {

PrefsController::PrefsController()
{
    window_.setWindowTitle(localizedString(QStringLiteral("Quilo Preferences")));
    window_.setAccessibleName(window_.windowTitle());
    window_.resize(480, 320);
}

void PrefsController::showWindow()
{
    window_.show();
    window_.raise();
    window_.activateWindow();
}

} // namespace quilo
