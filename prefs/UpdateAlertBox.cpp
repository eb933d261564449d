#include "prefs/UpdateAlertBox.h"

#include "foundation/Log.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace quilo {
namespace {

QPushButton* addButton(QMessageBox& box, const QString& title, QMessageBox::ButtonRole role)
{
    QPushButton* button = box.addButton(title, role);
    button->setAccessibleName(title);
    return button;
}

// A label wraps only between words and clips a word wider than itself: long
// runs (a version from the network) get places to break, unseen.
QString breakableText(const QString& text)
{
    constexpr int kLongestRun = 24;
    QString breakable;
    int run = 0;
    for (const QChar c : text) {
        run = c.isSpace() ? 0 : run + 1;
        if (run > kLongestRun) {
            breakable += QChar(0x200B); // zero-width space
            run = 1;
        }
        breakable += c;
    }
    return breakable;
}

void setTexts(QMessageBox& box, const UpdateAlert& alert)
{
    box.setWindowTitle(alert.messageText);
    box.setTextFormat(Qt::RichText);
    box.setText("<b>" + alert.messageText.toHtmlEscaped() + "</b>");
    box.setInformativeText(breakableText(alert.informativeText));
    // The version in the sentence comes from the network: text, never markup.
    if (auto* informative = box.findChild<QLabel*>("qt_msgbox_informativelabel"))
        informative->setTextFormat(Qt::PlainText);
    // Qt's box wraps a sentence into a narrow column otherwise.
    box.setStyleSheet("QLabel#qt_msgbox_informativelabel { min-width: 320px; }");
    const QIcon icon = QApplication::windowIcon();
    if (icon.isNull())
        box.setIcon(QMessageBox::Information);
    else
        box.setIconPixmap(icon.pixmap(64, 64));
}

int runOnGuiThread(const UpdateAlert& alert)
{
    QMessageBox box;
    box.setObjectName("UpdateAlert");
    box.setWindowModality(Qt::ApplicationModal);
    setTexts(box, alert);
    QPushButton* defaultButton = addButton(box, alert.defaultButton, QMessageBox::AcceptRole);
    QPushButton* alternate =
        alert.alternateButton ? addButton(box, *alert.alternateButton, QMessageBox::DestructiveRole) : nullptr;
    QPushButton* other = alert.otherButton ? addButton(box, *alert.otherButton, QMessageBox::RejectRole) : nullptr;
    box.setDefaultButton(defaultButton);
    // Escape and the window's close box answer "No" where there is one; never
    // "Don't Ask Again", which would change a setting unasked.
    box.setEscapeButton(other ? other : defaultButton);

    QApplication::beep();
    box.show();
    box.raise();
    box.activateWindow();
    box.exec();

    const QAbstractButton* chosen = box.clickedButton();
    if (chosen == defaultButton)
        return kAlertDefaultReturn;
    if (alternate && chosen == alternate)
        return kAlertAlternateReturn;
    return kAlertOtherReturn;
}

} // namespace

int runUpdateAlertBox(const UpdateAlert& alert, std::stop_token cancel)
{
    auto* application = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!application) {
        logLine("No update alert shown: there is no window system to show it on.");
        return kAlertOtherReturn;
    }
    if (QThread::currentThread() == application->thread())
        return runOnGuiThread(alert);
    // Not a blocking call: a GUI thread that is quitting waits for this
    // thread and never runs the alert, so the wait must end on a stop too.
    struct Answer {
        std::mutex mutex;
        std::condition_variable_any given;
        std::optional<int> button;
    };
    auto answer = std::make_shared<Answer>();
    QMetaObject::invokeMethod(
        application,
        [alert, answer] {
            const int button = runOnGuiThread(alert);
            const std::lock_guard lock(answer->mutex);
            answer->button = button;
            answer->given.notify_all();
        },
        Qt::QueuedConnection);
    std::unique_lock lock(answer->mutex);
    if (!answer->given.wait(lock, cancel, [&] { return answer->button.has_value(); }))
        return kAlertOtherReturn;
    return *answer->button;
}

} // namespace quilo
