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

#include <gtest/gtest.h>

#include <QDateTime>
#include <QThread>

#include <vector>

namespace quilo::test {

inline QByteArray propertyList(const QByteArray& root)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">"
        + root + "</plist>\n";
}

// A document with Quilo's entry and another application's beside it.
inline QByteArray updateDocument(const QString& version, const QString& download = "https://www.example.com/quilo/")
{
    QByteArray entry = "<key>Current Version</key><string>" + version.toHtmlEscaped().toUtf8() + "</string>";
    if (!download.isNull())
        entry += "<key>Download URL</key><string>" + download.toHtmlEscaped().toUtf8() + "</string>";
    return propertyList("<dict><key>Other</key><dict><key>Current Version</key><string>9.9</string></dict>"
                        "<key>Quilo</key><dict>"
        + entry + "</dict></dict>");
}

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
