#include "jobs/WindowJobInterface.h"

#include "foundation/LocalizedStrings.h"
#include "jobs/FolderPanel.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>

namespace quilo {
namespace {

// The picture as the window shows it, made on the job's thread so that only
// a thumbnail-sized copy crosses to the GUI thread.
QImage pictureForView(const Image* picture)
{
    const BitmapImageRep* rep = picture ? picture->bestRepresentation() : nullptr;
    if (!rep || rep->bitsPerSample() != 8 || rep->samplesPerPixel() != 4 || rep->isPlanar())
        return {};
    const QImage pixels(rep->bitmapData(), rep->pixelsWide(), rep->pixelsHigh(), rep->bytesPerRow(),
                        QImage::Format_RGBA8888_Premultiplied);
    constexpr int side = CreatingThumbnailsWindow::kPictureSide;
    if (pixels.width() <= side && pixels.height() <= side)
        return pixels.copy();
    return pixels.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// The texts are keys of the string table: on Linux some say what this desktop
// has in place of what the designed text names.
void runAlertPanel(const QString& titleKey, const QString& messageKey, const QString& buttonKey)
{
    const QString title = localizedString(titleKey), message = localizedString(messageKey),
                  button = localizedString(buttonKey);
    QMessageBox box;
    box.setObjectName("Alert");
    box.setWindowTitle(title);
    box.setTextFormat(Qt::RichText);
    box.setText("<b>" + title.toHtmlEscaped() + "</b>");
    box.setInformativeText(message);
    // Qt's box wraps a sentence into a narrow column otherwise.
    box.setStyleSheet("QLabel#qt_msgbox_informativelabel { min-width: 320px; }");
    const QIcon icon = QApplication::windowIcon();
    if (icon.isNull())
        box.setIcon(QMessageBox::Warning);
    else
        box.setIconPixmap(icon.pixmap(64, 64));
    QPushButton* answer = box.addButton(button, QMessageBox::AcceptRole);
    answer->setAccessibleName(button);
    box.setDefaultButton(answer);
    box.exec();
}

} // namespace

WindowJobInterface::WindowJobInterface()
    : window_(std::make_unique<CreatingThumbnailsWindow>())
{
}

WindowJobInterface::~WindowJobInterface() = default;

void WindowJobInterface::later(std::function<void()> call)
{
    if (QThread::currentThread() == window_->thread())
        call();
    else
        QMetaObject::invokeMethod(window_.get(), std::move(call), Qt::QueuedConnection);
}

void WindowJobInterface::andWait(const std::function<void()>& call)
{
    if (QThread::currentThread() == window_->thread())
        call();
    else
        QMetaObject::invokeMethod(window_.get(), call, Qt::BlockingQueuedConnection);
}

void WindowJobInterface::activate()
{
    later([this] {
        if (window_->isVisible()) {
            window_->raise();
            window_->activateWindow();
        }
    });
}

void WindowJobInterface::beep()
{
    later([] { QApplication::beep(); });
}

void WindowJobInterface::runAlert(const QString& title, const QString& message, const QString& button)
{
    alerted_ = true;
    andWait([&] { runAlertPanel(title, message, button); });
}

std::optional<QString> WindowJobInterface::runFolderPanel(const FolderPanelRequest& request)
{
    std::optional<QString> chosen;
    andWait([&] {
        FolderPanel panel(request);
        chosen = panel.run();
    });
    return chosen;
}

void WindowJobInterface::centerWindow()
{
    later([this] { window_->center(); });
}

void WindowJobInterface::showWindow()
{
    later([this] {
        window_->show();
        window_->raise();
        window_->activateWindow();
    });
}

void WindowJobInterface::closeWindow()
{
    later([this] { window_->hide(); });
}

void WindowJobInterface::setTitle(const QString& title)
{
    later([this, title] { window_->setTitle(title); });
}

void WindowJobInterface::setFileName(const QString& name)
{
    later([this, name] { window_->setFileName(name); });
}

void WindowJobInterface::setPicture(std::shared_ptr<const Image> picture)
{
    later([this, view = pictureForView(picture.get())] { window_->setPicture(view); });
}

void WindowJobInterface::setProgressMaximum(double maximum)
{
    later([this, maximum] { window_->setProgressMaximum(maximum); });
}

void WindowJobInterface::setProgressValue(double value)
{
    later([this, value] { window_->setProgressValue(value); });
}

} // namespace quilo
