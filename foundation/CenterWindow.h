#pragma once

// A window placed as the Mac places a window it is told to centre: in the
// middle of its screen's usable area. Header-only: the foundation libraries
// stay free of Qt's widgets, whose users include this.
#include <QGuiApplication>
#include <QRect>
#include <QScreen>
#include <QWidget>

namespace quilo {

inline void centerWindow(QWidget& window)
{
    const QScreen* screen = window.screen() ? window.screen() : QGuiApplication::primaryScreen();
    if (!screen)
        return;
    QRect frame = window.frameGeometry();
    frame.moveCenter(screen->availableGeometry().center());
    window.move(frame.topLeft());
}

} // namespace quilo
