// The update check's answers: up to date, a different version published, and
// what each button of its alerts does.
#include "tests/prefs/UpdateCheckFixture.h"

#include <QCoreApplication>

#include <thread>

namespace quilo {
namespace {

using namespace quilo::test;
using Lines = std::vector<std::string>;

const UpdateAlert kAutomaticOffer{"A new version is available",
                                  "Quilo 1.2 is available. Would you like to go to its download page now?", "Yes",
                                  "Don't Ask Again", "No"};

// Each kind of check of each published version, and what each answer does:
// the alert, the log, the page opened, the automatic check left on or not,
// the date and the notification recorded.
TEST_F(UpdateCheckTest, EachCheckAndAnswer)
{
    const QString page = "https://www.example.com/quilo/";
    const UpdateAlert upToDate{"Quilo is up to date", "Quilo 1.1 is the newest version available.", "OK",
                               std::nullopt, std::nullopt};
    const UpdateAlert manualOffer{kAutomaticOffer.messageText, kAutomaticOffer.informativeText, "Yes", std::nullopt,
                                  "No"};
    const std::string upToDateLine = "Quilo is up-to-date.", available = "Quilo version 1.2 is available.";
    const struct {
        const char* name;
        QString version, download;
        bool userInitiated, sheet;
        int answer;
        std::optional<UpdateAlert> alert;
        std::string logged;
        bool opens, stillChecksAtLaunch;
    } cases[] = {
        {"automatic, up to date", "1.1", page, false, false, kAlertOtherReturn, std::nullopt, upToDateLine, false, true},
        {"manual, up to date", "1.1", page, true, false, kAlertDefaultReturn, upToDate, upToDateLine, false, true},
        {"manual, up to date, as a sheet", "1.1", page, true, true, kAlertDefaultReturn, upToDate, upToDateLine, false,
         true},
        {"automatic, Yes", "1.2", page, false, false, kAlertDefaultReturn, kAutomaticOffer, available, true, true},
        {"manual, No", "1.2", page, true, false, kAlertOtherReturn, manualOffer, available, false, true},
        // Without an address "Yes" opens nothing and nothing is said about it.
        {"manual, Yes, no address", "1.2", QString(), true, false, kAlertDefaultReturn, manualOffer, available, false,
         true},
        {"automatic, Don't Ask Again", "1.2", page, false, false, kAlertAlternateReturn, kAutomaticOffer, available,
         false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        publish(updateDocument(c.version, c.download));
        alerts_.clear();
        notifications_.clear();
        const qsizetype opened = opened_.urls().size();
        const QDateTime before = QDateTime::currentDateTime();
        LogCapture log;
        check(c.userInitiated, c.answer, {}, c.sheet);
        EXPECT_EQ(alerts_, c.alert ? std::vector<UpdateAlert>{*c.alert} : std::vector<UpdateAlert>{});
        EXPECT_EQ(log.lines(), (Lines{"Checking for updates...", c.logged}));
        EXPECT_EQ(opened_.urls().mid(opened), c.opens ? QList<QUrl>{QUrl(page)} : QList<QUrl>{});
        EXPECT_EQ(defaults_.objectForKey(RTZCheckForUpdatesAtLaunchKey), QVariant(c.stillChecksAtLaunch));
        expectRecorded(before);
    }
    EXPECT_EQ(server_.requests().size(), qsizetype(std::size(cases)));

    // Don't Ask Again and the date, kept as the user's own values, of their
    // types, for the next launch.
    ASSERT_TRUE(defaults_.synchronize());
    const UserDefaults nextLaunch(QString::fromStdString((folder_ / "defaults.conf").string()));
    EXPECT_EQ(nextLaunch.objectForKey(RTZCheckForUpdatesAtLaunchKey), QVariant(false));
    EXPECT_EQ(nextLaunch.objectForKey(RTZLastCheckForUpdatesKey).typeId(), QMetaType::QDateTime);
}

// Versions are told apart as strings: older, longer, a blank before or after,
// a letter added, none at all, all count as an update. A line break in one is
// let neither into the log nor into the alert, nor the whole of a long one.
TEST_F(UpdateCheckTest, AnyOtherVersionStringIsAnUpdate)
{
    const struct {
        QString published;
        std::string logged;
    } versions[] = {{"1.0", "1.0"}, {"1.10", "1.10"}, {"1.1 ", "1.1 "}, {" 1.1", " 1.1"},
                    {"1.1b", "1.1b"}, {"", ""}, {"1.1\nforged", "1.1?forged"},
                    {QString(300, '9'), std::string(200, '9') + "..."}};
    for (const auto& version : versions) {
        alerts_.clear();
        publish(updateDocument(version.published));
        LogCapture log;
        check(false);
        ASSERT_EQ(alerts_.size(), 1u) << version.logged;
        const std::string available = "Quilo version " + version.logged + " is available.";
        EXPECT_TRUE(alerts_[0].informativeText.startsWith(QString::fromStdString("Quilo " + version.logged + " is")));
        EXPECT_EQ(log.lines(), (Lines{"Checking for updates...", available}));
    }
    EXPECT_EQ(notifications_.size(), std::size(versions));
}

// "Yes" opens web pages only: another address is logged and ignored, a
// missing one opens nothing and is not mentioned. Asked for, the check offers
// no way to turn itself off.
TEST_F(UpdateCheckTest, DownloadAddressesThatAreNotWebPagesAreIgnored)
{
    for (const QString& address : std::initializer_list<QString>{
             "file:///etc/passwd", "javascript:alert(1)", "ftp://www.example.com/quilo.zip", "www.example.com/quilo/",
             "http://", QString()}) {
        publish(updateDocument("1.2", address));
        LogCapture log;
        check(true, kAlertDefaultReturn);
        Lines expected{"Checking for updates...", "Quilo version 1.2 is available."};
        if (!address.isNull())
            expected.push_back("Ignoring a download address that is not http or https: " + address.toStdString());
        EXPECT_EQ(log.lines(), expected);
        EXPECT_EQ(alerts_.back().alternateButton, std::nullopt);
    }
    EXPECT_TRUE(opened_.urls().isEmpty());
    EXPECT_EQ(notifications_.size(), 6u);
}

// The automatic check runs on a thread of its own: its notification comes on
// that thread, and the page it opens is opened by the GUI thread.
TEST_F(UpdateCheckTest, CheckOnItsOwnThreadOpensThePageOnTheGuiThread)
{
    publish(updateDocument("1.2", "http://www.example.com/quilo/"));
    std::thread thread([&] { check(false, kAlertDefaultReturn); });
    thread.join();
    ASSERT_EQ(notifiedOn_.size(), 1u);
    EXPECT_NE(notifiedOn_[0], QThread::currentThread());
    EXPECT_TRUE(opened_.urls().isEmpty()) << "opened before the GUI thread got to it";
    QCoreApplication::processEvents();
    EXPECT_EQ(opened_.urls(), QList<QUrl>{QUrl("http://www.example.com/quilo/")});
    EXPECT_EQ(opened_.threads(), QList<QThread*>{QThread::currentThread()});
}

} // namespace
} // namespace quilo
