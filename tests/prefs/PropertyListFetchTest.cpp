// What the update check's outcomes do not show of the fetch beneath it: the
// caller's thread is left alone. Every document and failure (the deadline's
// too) is tested through the check itself.
#include "prefs/PropertyListFetch.h"
#include "tests/support/LoopbackHttpServer.h"
#include "tests/support/UpdateDocument.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTimer>

namespace quilo {
namespace {

using namespace std::chrono_literals;
using quilo::test::HttpResponse;
using quilo::test::LoopbackHttpServer;

const QByteArray kDocument = quilo::test::updateDocument("1.2");

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
