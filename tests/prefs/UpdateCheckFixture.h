#pragma once

// An update check as the application runs one, against a web server of the
// test's own, with a store of defaults of its own, the log captured, the
// finished notification counted and the user's answer to each alert given.
#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "prefs/RTZUpdate.h"
#include "tests/prefs/OpenedUrls.h"
#include "tests/support/LogCapture.h"
#include "tests/support/LoopbackHttpServer.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/UpdateDocument.h"

#include <gtest/gtest.h>

#include <QDateTime>
#include <QThread>

#include <vector>

namespace quilo::test {

class UpdateCheckTest : public ::testing::Test {
protected:
    UpdateCheckTest()
        : defaults_(QString::fromStdString((folder_ / "defaults.conf").string()))
    {
        defaults_.registerDefaults(booleanFactoryDefaults());
        NotificationCenter::defaultCenter().addObserver(this, RTZUpdateFinishedCheckingNotification,
                                                        [this](const Notification& notification) {
                                                            notifications_.push_back(notification);
                                                            notifiedOn_.push_back(QThread::currentThread());
                                                        });
    }
    ~UpdateCheckTest() override { NotificationCenter::defaultCenter().removeObserver(this); }

    void publish(const QByteArray& document)
    {
        server_.serve("/appversions.xml", HttpResponse::document(document));
    }

    // One check as the application makes it, from the document at `url`;
    // the user answers `answer` to any alert.
    void check(bool userInitiated, int answer = kAlertOtherReturn, const QUrl& url = {}, bool sheetModal = false)
    {
        auto update = RTZUpdate::updateForApplication("Quilo", url.isEmpty() ? server_.url("/appversions.xml") : url,
                                                      defaults_);
        update->setAlertRunner([this, answer](const UpdateAlert& alert) {
            alerts_.push_back(alert);
            return answer;
        });
        update->setTimeout(std::chrono::milliseconds(400));
        update->checkForUpdates(userInitiated, "1.1", RTZCheckForUpdatesAtLaunchKey, RTZLastCheckForUpdatesKey,
                                sheetModal);
    }

    // The check ended with its date (between `since` and now) and one
    // finished notification, with nothing attached.
    void expectRecorded(const QDateTime& since)
    {
        const QDateTime checked = defaults_.objectForKey(RTZLastCheckForUpdatesKey).toDateTime();
        EXPECT_TRUE(checked.isValid());
        EXPECT_GE(checked, since);
        EXPECT_LE(checked, QDateTime::currentDateTime());
        ASSERT_EQ(notifications_.size(), 1u);
        EXPECT_FALSE(notifications_[0].object.isValid());
        EXPECT_TRUE(notifications_[0].userInfo.isEmpty());
    }

    TemporaryDirectory folder_;
    UserDefaults defaults_;
    LoopbackHttpServer server_;
    OpenedUrls opened_;
    LogCapture log_;
    std::vector<UpdateAlert> alerts_;
    std::vector<Notification> notifications_;
    std::vector<QThread*> notifiedOn_;
};

} // namespace quilo::test
