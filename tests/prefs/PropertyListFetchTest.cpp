// What the update check's outcomes do not show of the fetch beneath it: the
// deadline holds for the whole, and the caller's thread is left alone.
// Every document and failure is tested through the check itself.
#include "prefs/PropertyListFetch.h"
#include "tests/support/LoopbackHttpServer.h"
#include "tests/support/UpdateDocument.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

namespace quilo {
namespace {

using namespace std::chrono_literals;
using quilo::test::HttpResponse;
using quilo::test::LoopbackHttpServer;

const QByteArray kDocument = quilo::test::updateDocument("1.2");

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
