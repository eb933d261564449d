#pragma once

class QWidget;

namespace quilo {

class UserDefaults;

// Ties every checkbox in the window that names a user default (its
// "defaultsKey" property, set in the .ui file) to that default: it shows the
// value whenever the window is shown or activated, and a click stores the
// new value at once.
void bindCheckBoxesToDefaults(QWidget& window, UserDefaults& defaults);

} // namespace quilo
