// The fetch under the update check: one GET, the size cap applied while the
// body arrives, the deadline for the whole, the caller's thread left alone.
#include "prefs/PropertyListFetch.h"
#include "tests/support/LoopbackHttpServer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

namespace quilo {
namespace {

using namespace std::chrono_literals;
using quilo::test::HttpResponse;
using quilo::test::LoopbackHttpServer;

const QByteArray kDocument = "<?xml version=\"1.0\"?><plist><dict><key>Quilo</key><dict>"
                             "<key>Current Version</key><string>1.2</string></dict></dict></plist>";

struct Outcome {
    std::optional<QVariant> list;
    QString error;
    qint64 milliseconds;
};

Outcome fetch(const QUrl& url, std::chrono::milliseconds timeout)
{
    QElapsedTimer clock;
    clock.start();
    Outcome outcome;
    outcome.list = propertyListWithContentsOfURL(url, timeout, &outcome.error);
    outcome.milliseconds = clock.elapsed();
    return outcome;
}

TEST(PropertyListFetch, GetsAndParsesTheDocument)
{
    LoopbackHttpServer server;
    server.serve("/appversions.xml", HttpResponse::document(kDocument));
    const Outcome outcome = fetch(server.url("/appversions.xml"), 20s);
    ASSERT_TRUE(outcome.list) << outcome.error.toStdString();
    EXPECT_EQ(outcome.list->toMap()["Quilo"].toMap()["Current Version"], "1.2");
    EXPECT_EQ(server.requests(), QStringList{"GET /appversions.xml"});
}

// Too much is refused as soon as it shows, not when the deadline comes.
TEST(PropertyListFetch, StopsAtTheSizeLimit)
{
    LoopbackHttpServer server;
    server.serve("/endless.xml", HttpResponse::endless());
    server.serve("/announced.xml", HttpResponse::announcing(qint64(1) << 40));
    for (const char* path : {"/endless.xml", "/announced.xml"}) {
        const Outcome outcome = fetch(server.url(path), 20s);
        EXPECT_FALSE(outcome.list) << path;
        EXPECT_EQ(outcome.error.toStdString(), "the document is larger than 1048576 bytes") << path;
        EXPECT_LT(outcome.milliseconds, 10'000) << path;
    }
    PropertyListLimits small;
    small.maximumBytes = 100;
    server.serve("/appversions.xml", HttpResponse::document(kDocument));
    EXPECT_FALSE(propertyListWithContentsOfURL(server.url("/appversions.xml"), 20s, nullptr, small));
}

// The deadline is for the whole fetch, however the server stalls.
TEST(PropertyListFetch, GivesUpAtTheDeadline)
{
    LoopbackHttpServer server;
    server.serve("/silent.xml", HttpResponse::silence());
    server.serve("/stalled.xml", HttpResponse::announcing(100));
    for (const char* path : {"/silent.xml", "/stalled.xml"}) {
        const Outcome outcome = fetch(server.url(path), 300ms);
        EXPECT_FALSE(outcome.list) << path;
        EXPECT_EQ(outcome.error.toStdString(), "no answer within 300 ms") << path;
        EXPECT_GE(outcome.milliseconds, 300) << path;
        EXPECT_LT(outcome.milliseconds, 5'000) << path;
    }
}

TEST(PropertyListFetch, ReadsOnlyFromTheWeb)
{
    for (const QUrl& url : {QUrl::fromLocalFile("/etc/hostname"), QUrl("ftp://127.0.0.1/appversions.xml"),
                            QUrl("http:///appversions.xml"), QUrl()}) {
        QString error;
        EXPECT_FALSE(propertyListWithContentsOfURL(url, 300ms, &error)) << url.toString().toStdString();
        EXPECT_EQ(error.toStdString(), "not an http or https address");
    }
}

// The caller waits without running its own events: a timer due at once only
// fires after the fetch, so nothing of the GUI's runs in its middle.
TEST(PropertyListFetch, CallerEventsWaitUntilTheEnd)
{
    LoopbackHttpServer server;
    server.serve("/appversions.xml", HttpResponse::document(kDocument));
    bool fired = false;
    QTimer::singleShot(0, [&] { fired = true; });
    EXPECT_TRUE(propertyListWithContentsOfURL(server.url("/appversions.xml"), 20s));
    EXPECT_FALSE(fired);
    QCoreApplication::processEvents();
    EXPECT_TRUE(fired);
}

} // namespace
} // namespace quilo
