#pragma once

#include "prefs/UpdateAlert.h"

namespace quilo {

// The alert runner of the application: a QMessageBox on the GUI thread,
// handed there and waited for when the check runs on a thread of its own.
// Without a widget application to show it on, nothing is shown and the
// answer is "other", which changes nothing.
int runUpdateAlertBox(const UpdateAlert& alert);

} // namespace quilo
