#include "prefs/PrefsKeyboard.h"

#include <QAction>
#include <QKeyEvent>
#include <QMainWindow>
#include <QShortcut>
#include <QToolBar>
#include <QToolButton>

namespace quilo {
namespace {

void addShortcut(QMainWindow& window, const QKeySequence& keys, std::function<void()> action)
{
    auto* shortcut = new QShortcut(keys, &window);
    // The focus may be anywhere in the window, the table included.
    shortcut->setContext(Qt::WindowShortcut);
    QObject::connect(shortcut, &QShortcut::activated, &window, std::move(action));
}

// The arrow keys on a toolbar item step through the panes, as on a tab bar,
// and the focus follows the selected item.
class ToolbarArrows final : public QObject {
public:
    ToolbarArrows(QToolBar& toolbar, std::function<void(int)> stepPane)
        : QObject(&toolbar), toolbar_(toolbar), stepPane_(std::move(stepPane))
    {
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::KeyPress)
            return false;
        const int key = static_cast<QKeyEvent*>(event)->key();
        const int step = key == Qt::Key_Right || key == Qt::Key_Down ? 1
            : key == Qt::Key_Left || key == Qt::Key_Up              ? -1
                                                                      : 0;
        if (step == 0 || !qobject_cast<QToolButton*>(watched))
            return false;
        stepPane_(step);
        for (QAction* item : toolbar_.actions())
            if (item->isChecked())
                if (QWidget* button = toolbar_.widgetForAction(item))
                    button->setFocus(Qt::TabFocusReason);
        return true;
    }

private:
    QToolBar& toolbar_;
    std::function<void(int)> stepPane_;
};

} // namespace

void addPrefsKeys(QMainWindow& window, QToolBar& toolbar, std::function<void(int step)> stepPane)
{
    const auto next = [stepPane] { stepPane(1); };
    const auto previous = [stepPane] { stepPane(-1); };
    addShortcut(window, QKeySequence(Qt::CTRL | Qt::Key_Tab), next);
    addShortcut(window, QKeySequence(Qt::CTRL | Qt::Key_PageDown), next);
    // Shift+Tab arrives as Backtab, with or without Shift in the modifiers.
    addShortcut(window, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab), previous);
    addShortcut(window, QKeySequence(Qt::CTRL | Qt::Key_Backtab), previous);
    addShortcut(window, QKeySequence(Qt::CTRL | Qt::Key_PageUp), previous);
    addShortcut(window, QKeySequence(Qt::Key_Escape), [&window] { window.close(); });
    addShortcut(window, QKeySequence(Qt::CTRL | Qt::Key_W), [&window] { window.close(); });

    auto* arrows = new ToolbarArrows(toolbar, stepPane);
    for (QAction* item : toolbar.actions())
        if (QWidget* button = toolbar.widgetForAction(item)) {
            button->setFocusPolicy(Qt::TabFocus);
            button->installEventFilter(arrows);
        }
}

} // namespace quilo
