// The update check's alert on a real X server, raised from the automatic
// check's own thread: found by its title, its buttons read and one clicked
// with the X server's pointer. The screenshot of the screen goes to the
// build's test artefacts.
#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "prefs/RTZUpdate.h"
#include "tests/desktop/DesktopUser.h"
#include "tests/support/LoopbackHttpServer.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/UpdateDocument.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <algorithm>
#include <atomic>
#include <thread>

namespace quilo {
namespace {

using namespace quilo::test;

class UpdateAlertOnScreen : public ::testing::Test {
protected:
    UpdateAlertOnScreen()
        : defaults_(QString::fromStdString((folder_ / "defaults.conf").string()))
    {
        defaults_.registerDefaults(booleanFactoryDefaults());
        NotificationCenter::defaultCenter().addObserver(this, RTZUpdateFinishedCheckingNotification,
                                                        [this](const Notification&) { ++notifications_; });
    }
    ~UpdateAlertOnScreen() override { NotificationCenter::defaultCenter().removeObserver(this); }

    void check(bool userInitiated)
    {
        auto update = RTZUpdate::updateForApplication("Quilo", server_.url("/appversions.xml"), defaults_);
        update->checkForUpdates(userInitiated, "1.1", RTZCheckForUpdatesAtLaunchKey, RTZLastCheckForUpdatesKey,
                                false);
        finished_ = true;
    }

    // The alert, found as a person would: on the screen, by its title, in
    // front of the rest.
    static QMessageBox* alertOnScreen(const QString& title)
    {
        QMessageBox* box = nullptr;
        EXPECT_TRUE(eventually([&] { return (box = topLevel<QMessageBox>(title)) != nullptr; }));
        if (!box)
            return nullptr;
        EXPECT_FALSE(xWindowsNamed(title.toStdString()).empty()) << "the X server knows the alert by its title";
        EXPECT_TRUE(eventually([&] { return box->isActiveWindow(); })) << "the alert is brought to the front";
        return box;
    }

    // Its buttons' titles as they are shown, left to right.
    static std::string buttonsOnScreen(QMessageBox* box)
    {
        QStringList titles;
        onGui([&] {
            QList<QAbstractButton*> shown = box->buttons();
            std::sort(shown.begin(), shown.end(), [](QAbstractButton* a, QAbstractButton* b) {
                return a->mapToGlobal(QPoint()).x() < b->mapToGlobal(QPoint()).x();
            });
            for (QAbstractButton* button : shown)
                titles << button->text();
        });
        return titles.join(" | ").toStdString();
    }

    static QPushButton* button(QMessageBox* box, const QString& text)
    {
        QPushButton* found = nullptr;
        onGui([&] {
            for (QAbstractButton* candidate : box->buttons())
                if (candidate->text() == text)
                    found = qobject_cast<QPushButton*>(candidate);
        });
        return found;
    }

    // Whatever went wrong above, no alert may stay: the check waits on it.
    static void dismissAny(const QString& title)
    {
        onGui([&] {
            if (auto* box = topLevel<QMessageBox>(title))
                box->reject();
        });
    }

    TemporaryDirectory folder_;
    UserDefaults defaults_;
    LoopbackHttpServer server_;
    std::atomic<bool> finished_{false};
    std::atomic<int> notifications_{0};
};

// A hostile document's version, nearly as long as a document may be and with
// no place to break a line: the alert shows what the log shows (200
// characters), all of it, and fits on the screen, where its buttons are.
TEST_F(UpdateAlertOnScreen, AutomaticCheckFromItsThreadIsAnsweredDontAskAgain)
{
    const QString title = "A new version is available";
    server_.serve("/appversions.xml", HttpResponse::document(updateDocument(QByteArray((1 << 20) - 512, 'W'))));
    std::thread checker([this] { check(false); });
    actAsUser([&] {
        QMessageBox* box = alertOnScreen(title);
        ASSERT_TRUE(box);
        EXPECT_EQ(buttonsOnScreen(box), "Yes | Don't Ask Again | No");
        keepScreenshot(box, "update-available-alert-screen.png");
        onGui([&] {
            EXPECT_EQ(box->windowModality(), Qt::ApplicationModal);
            EXPECT_EQ(box->defaultButton(), button(box, "Yes"));
            EXPECT_EQ(box->informativeText().remove(QChar(0x200B)), "Quilo " + QString(200, 'W')
                          + "... is available. Would you like to go to its download page now?");
            const QRect screen = box->screen()->availableGeometry();
            EXPECT_TRUE(screen.contains(box->frameGeometry())) << box->width() << "x" << box->height();
            const auto* label = box->findChild<QLabel*>("qt_msgbox_informativelabel");
            const QRect text = label->fontMetrics().boundingRect(QRect(0, 0, label->width(), screen.height()),
                                                                 Qt::TextWordWrap, label->text());
            EXPECT_EQ(label->contentsRect().size().expandedTo(text.size()), label->contentsRect().size())
                << "no line runs past the label, none below it";
        });
        EXPECT_FALSE(finished_) << "the check waits for the answer";
        if (QPushButton* dontAsk = button(box, "Don't Ask Again"))
            click(dontAsk);
        EXPECT_TRUE(eventually([&] { return finished_.load(); }));
        dismissAny(title);
    });
    checker.join();
    EXPECT_EQ(defaults_.objectForKey(RTZCheckForUpdatesAtLaunchKey), QVariant(false));
    EXPECT_TRUE(defaults_.objectForKey(RTZLastCheckForUpdatesKey).toDateTime().isValid());
    EXPECT_EQ(notifications_, 1);
}

} // namespace
} // namespace quilo
