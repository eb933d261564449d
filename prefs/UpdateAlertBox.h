#pragma once

#include "prefs/UpdateAlert.h"

#include <stop_token>

namespace quilo {

// The alert runner of the application: a QMessageBox on the GUI thread,
// handed there and waited for when the check runs on a thread of its own.
// Without a widget application to show it on, or once a stop is requested
// through `cancel` while it waits for the GUI thread, the answer is "other",
// which changes nothing.
int runUpdateAlertBox(const UpdateAlert& alert, std::stop_token cancel = {});

} // namespace quilo
