// Every way the update document can fail to give a version ends the same:
// "timed out" in the log, no alert, no date of a check, no notification, for
// both kinds of check.
#include "prefs/MakersWebSite.h"
#include "tests/prefs/UpdateCheckFixture.h"
#include "tests/support/Files.h"

namespace quilo {
namespace {

using namespace quilo::test;
using Lines = std::vector<std::string>;


struct Failure {
    const char* name;
    HttpResponse response;
};

HttpResponse served(const QByteArray& root) { return HttpResponse::document(propertyList(root)); }

HttpResponse quiloEntry(const QByteArray& fields)
{
    return served("<dict><key>Quilo</key><dict>" + fields + "</dict></dict>");
}

std::vector<Failure> failuresOnTheServer()
{
    const QByteArray valid = updateDocument("1.2");
    const QByteArray padding(2 << 20, ' ');
    const QByteArray oversized = QByteArray(valid).replace("<key>Other</key>", padding + "<key>Other</key>");
    const QByteArray entities = R"(<?xml version="1.0"?>
<!DOCTYPE plist [<!ENTITY v "1.2"><!ENTITY lol "&v;&v;&v;&v;&v;&v;&v;&v;&v;&v;">]>
<plist><dict><key>Quilo</key><dict><key>Current Version</key><string>&v;</string></dict></dict></plist>)";
    return {
        {"no entry for Quilo", served("<dict><key>Other</key><dict>"
                                      "<key>Current Version</key><string>1.2</string></dict></dict>")},
        {"an entry without a version", quiloEntry("<key>Download URL</key><string>https://www.example.com/</string>")},
        {"a version that is a number", quiloEntry("<key>Current Version</key><integer>2</integer>")},
        {"an entry that is not a dictionary", served("<dict><key>Quilo</key><string>1.2</string></dict>")},
        {"a root that is not a dictionary", served("<array><string>1.2</string></array>")},
        {"an empty body", HttpResponse::document({})},
        {"malformed XML", HttpResponse::document(valid.left(valid.size() / 2))},
        {"entities declared", HttpResponse::document(entities)},
        {"a body over the size limit", HttpResponse::document(oversized)},
        {"a body that never ends", HttpResponse::endless()},
        {"a length over the size limit", HttpResponse::announcing(qint64(1) << 30)},
        {"HTTP 404 with a document", HttpResponse::error(404, valid)},
        {"no answer", HttpResponse::silence()},
    };
}

class UpdateCheckFailure : public UpdateCheckTest {
protected:
    // The cause is logged before the line that every failure ends with.
    void checkBothWays(const std::string& what, const QUrl& url, const std::string& cause = {})
    {
        for (bool userInitiated : {false, true}) {
            LogCapture log;
            check(userInitiated, kAlertDefaultReturn, url);
            const std::string from = "No version of Quilo from the update document at " + url.toString().toStdString();
            const Lines lines = log.lines();
            ASSERT_EQ(lines.size(), 3u) << what;
            EXPECT_EQ(lines[0] + '|' + lines[2], "Checking for updates...|Check for updates timed out.") << what;
            EXPECT_TRUE(lines[1].starts_with(from + ": ") && lines[1].find(cause) != std::string::npos) << lines[1];
        }
        EXPECT_TRUE(alerts_.empty()) << what;
        EXPECT_FALSE(defaults_.objectForKey(RTZLastCheckForUpdatesKey).isValid()) << what;
        EXPECT_TRUE(notifications_.empty()) << what;
        EXPECT_TRUE(defaults_.boolForKey(RTZCheckForUpdatesAtLaunchKey)) << what;
        EXPECT_TRUE(opened_.urls().isEmpty()) << what;
    }

    QUrl onLoopback(const char* scheme, quint16 port)
    {
        return QUrl(QString("%1://127.0.0.1:%2/appversions.xml").arg(scheme).arg(port));
    }
};

TEST_F(UpdateCheckFailure, DocumentsThatGiveNoVersion)
{
    int number = 0;
    for (const Failure& failure : failuresOnTheServer()) {
        const QString path = QString("/failure-%1.xml").arg(++number);
        server_.serve(path, failure.response);
        checkBothWays(failure.name, server_.url(path));
    }
}

TEST_F(UpdateCheckFailure, ServersThatCannotBeReached)
{
    checkBothWays("connection refused", onLoopback("http", LoopbackHttpServer::closedPort()), "Connection refused");
    // A server that speaks plain HTTP where TLS is expected.
    publish(updateDocument("1.2"));
    checkBothWays("no TLS", onLoopback("https", server_.port()), "no answer within");
    checkBothWays("no such host", QUrl("http://quilo-update.invalid/appversions.xml"), "not found");
}

// A build that names no maker's site asks nobody.
TEST_F(UpdateCheckFailure, NoSiteNoRequest)
{
    for (bool userInitiated : {false, true})
        RTZUpdate("Quilo", pageOnMakersSite("", "/appversions.xml", true), defaults_)
            .checkForUpdates(userInitiated, "1.1", RTZCheckForUpdatesAtLaunchKey, RTZLastCheckForUpdatesKey, false);
    EXPECT_EQ(log_.lines(), (Lines(2, "Not checking for updates: this Quilo was built without the maker's web site.")));
    EXPECT_TRUE(notifications_.empty());
    EXPECT_FALSE(defaults_.objectForKey(RTZLastCheckForUpdatesKey).isValid());
}

// Redirects are followed on the web and nowhere else: not to a file on this
// machine, however good a document it holds.
TEST_F(UpdateCheckFailure, RedirectsLeadOnlyToWebAddresses)
{
    const QByteArray valid = updateDocument("1.2");
    const QUrl file = QUrl::fromLocalFile(QString::fromStdString((folder_ / "appversions.xml").string()));
    writeFileText(file.toLocalFile().toStdString(), valid.toStdString());
    server_.serve("/to-file.xml", HttpResponse::redirect(file.toEncoded()));
    server_.serve("/loop.xml", HttpResponse::redirect("/loop.xml"));
    checkBothWays("a redirect to a file", server_.url("/to-file.xml"));
    checkBothWays("a redirect to itself", server_.url("/loop.xml"));
    checkBothWays("a file", file);

    server_.serve("/moved.xml", HttpResponse::redirect("/appversions-2.xml"));
    server_.serve("/appversions-2.xml", HttpResponse::document(valid));
    check(false, kAlertOtherReturn, server_.url("/moved.xml"));
    EXPECT_EQ(alerts_.size(), 1u);
    EXPECT_TRUE(server_.requests().endsWith("GET /appversions-2.xml"));
}

} // namespace
} // namespace quilo
