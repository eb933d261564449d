#pragma once
#include <functional>

class QMainWindow;
class QToolBar;

namespace quilo {

// The preferences window from the keyboard: Ctrl+Tab and Ctrl+PgDown show the
// next pane, Ctrl+Shift+Tab and Ctrl+PgUp the one before; the toolbar's items
// take the focus with Tab and the arrow keys step from pane to pane there;
// Escape and Ctrl+W close the window. `stepPane` shows the pane `step` places
// on, wrapping round.
void addPrefsKeys(QMainWindow& window, QToolBar& toolbar, std::function<void(int step)> stepPane);

} // namespace quilo
