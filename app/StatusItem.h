#pragma once
#include "app/TrayHostWatcher.h"

#include <QIcon>
#include <QObject>

#include <memory>

class QMenu;
class QSystemTrayIcon;

namespace quilo {

// The application's item in the tray: an image, no title, and a menu that
// opens on either button, as a menu-bar item would. It waits for the tray.
class StatusItem final : public QObject {
    Q_OBJECT
public:
    StatusItem(QIcon image, QMenu& menu, QObject* parent = nullptr);
    ~StatusItem() override;

    // The tray icon once a tray has taken it; null while waiting for one.
    QSystemTrayIcon* trayIcon() const { return trayIcon_.get(); }
    // No tray was there when the item was made: the menu cannot be reached yet.
    bool waitingForTray() const { return waitingForTray_; }

signals:
    void shown();

private:
    void show();

    QIcon image_;
    QMenu& menu_;
    TrayHostWatcher hostWatcher_;
    std::unique_ptr<QSystemTrayIcon> trayIcon_;
    bool waitingForTray_ = false;
};

} // namespace quilo
