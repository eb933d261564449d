#include "app/StatusItem.h"

#include <QCursor>
#include <QMenu>
#include <QSystemTrayIcon>

namespace quilo {

StatusItem::StatusItem(QIcon image, QMenu& menu, QObject* parent)
    : QObject(parent)
    , image_(std::move(image))
    , menu_(menu)
{
    connect(&hostWatcher_, &TrayHostWatcher::hostAvailable, this, &StatusItem::show);
    waitingForTray_ = !hostWatcher_.waitForHost();
}

StatusItem::~StatusItem() = default;

void StatusItem::show()
{
    trayIcon_ = std::make_unique<QSystemTrayIcon>(image_);
    trayIcon_->setToolTip(QStringLiteral("Quilo"));
    trayIcon_->setContextMenu(&menu_);
    // A left click opens the menu too; a tray shows it itself on a right click.
    connect(trayIcon_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger)
            menu_.popup(QCursor::pos());
    });
    trayIcon_->show();
    waitingForTray_ = false;
    emit shown();
}

} // namespace quilo
