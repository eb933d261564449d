#pragma once
#include <QWidget>

namespace quilo {

// The preferences window. Its panes (General, HotKeys, Update) are not built
// yet: for now it is an empty window with its title.
class PrefsController {
public:
    PrefsController();

    // Shows the window in front of every other, with the keyboard focus.
    void showWindow();

    QWidget& window() { return window_; }

private:
    QWidget window_;
};

} // namespace quilo
