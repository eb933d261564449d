// Hot keys through the desktop portal, against a stand-in portal on a bus of
// the test's own: what the portal is asked, what it answers, and which of its
// signals come back as presses and releases.
#include "HotKeysLib/KeyCombo.h"
#include "platform/linux/PortalHotKeyRegistrar.h"
#include "tests/hotkeys/FakeGlobalShortcutsPortal.h"
#include "tests/support/DBusDaemon.h"
#include "tests/support/LogCapture.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>

#include <algorithm>
#include <functional>

namespace quilo {
namespace {

using namespace std::chrono_literals;
using Answer = test::FakeGlobalShortcutsPortal::Answer;

constexpr std::int32_t kT = 17;
constexpr OSType kSignature = fourCharCode("Qilo");

// Runs the main thread's events until `done` holds or a few seconds pass.
bool processEventsUntil(const std::function<bool()>& done)
{
    const QDeadlineTimer deadline(5s);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

QStringList triggersOf(const test::FakeGlobalShortcutsPortal::Binding& binding)
{
    QStringList triggers;
    for (const auto& shortcut : binding.shortcuts)
        triggers.append(shortcut.options.value("preferred_trigger").toString());
    return triggers;
}

class PortalHotKeyRegistrarTest : public ::testing::Test {
protected:
    PortalHotKeyRegistrarTest()
    {
        registrar_->setEventHandler([this](const HotKeyEvent& event) { events_.push_back(event); });
    }
    ~PortalHotKeyRegistrarTest() override
    {
        registrar_.reset();
        QDBusConnection::disconnectFromBus(client_.name());
    }

    EventHotKeyRef registerT(std::int32_t modifiers, std::uint32_t id = 1)
    {
        return registrar_->registerEventHotKey(kT, modifiers, {kSignature, id});
    }
    QString session(qsizetype index = 0) const { return portal_.record().openedSessions.value(index); }
    test::FakeGlobalShortcutsPortal::Binding lastBinding() const { return portal_.record().bindings.back(); }
    QString shortcutId(qsizetype index) const { return lastBinding().shortcuts.value(index).id; }
    // Signals come in the order sent, so a test that ends its signals with a
    // Deactivated knows, once that release is in, that the ones before it
    // have been dealt with.
    bool processEventsUntilARelease()
    {
        return processEventsUntil([&] {
            return std::any_of(events_.begin(), events_.end(), [](const HotKeyEvent& event) {
                return event.transition == HotKeyTransition::Released;
            });
        });
    }

    test::DBusDaemon bus_;
    test::FakeGlobalShortcutsPortal portal_{QString::fromStdString(bus_.address())};
    QDBusConnection client_ =
        QDBusConnection::connectToBus(QString::fromStdString(bus_.address()), QStringLiteral("quilo-client"));
    test::LogCapture log_;
    std::unique_ptr<PortalHotKeyRegistrar> registrar_ = std::make_unique<PortalHotKeyRegistrar>(client_);
    std::vector<HotKeyEvent> events_;
};

TEST_F(PortalHotKeyRegistrarTest, RegistrationsBindTheirTriggersInOneSession)
{
    const EventHotKeyRef create = registerT(cmdKey + shiftKey, 1);
    const EventHotKeyRef restore = registerT(cmdKey + optionKey + shiftKey, 2);
    const EventHotKeyRef save = registerT(cmdKey + controlKey, 3);
    EXPECT_NE(create, 0u);
    EXPECT_NE(restore, 0u);
    EXPECT_NE(save, 0u);
    EXPECT_TRUE(create != restore && restore != save && save != create);

    const auto record = portal_.record();
    ASSERT_EQ(record.sessionRequests.size(), 1u);
    EXPECT_FALSE(record.sessionRequests[0].value("handle_token").toString().isEmpty());
    EXPECT_FALSE(record.sessionRequests[0].value("session_handle_token").toString().isEmpty());

    const auto& bindings = record.bindings;
    ASSERT_EQ(bindings.size(), 3u);
    for (const auto& binding : bindings)
        EXPECT_EQ(binding.session, session());
    // Each binding carries every hot key so far, under the same ids.
    EXPECT_EQ(triggersOf(bindings[0]), QStringList({"LOGO+SHIFT+t"}));
    ASSERT_EQ(triggersOf(bindings[2]), QStringList({"LOGO+SHIFT+t", "LOGO+ALT+SHIFT+t", "LOGO+CTRL+t"}));
    EXPECT_EQ(bindings[2].shortcuts[0].id, bindings[0].shortcuts[0].id);
    EXPECT_EQ(bindings[2].shortcuts[1].id, bindings[1].shortcuts[1].id);
    QStringList ids;
    for (const auto& shortcut : bindings[2].shortcuts) {
        EXPECT_FALSE(shortcut.options.value("description").toString().isEmpty());
        ids.append(shortcut.id);
    }
    ids.removeDuplicates();
    EXPECT_EQ(ids.size(), 3);
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(PortalHotKeyRegistrarTest, RefusedBindingsGiveZeroAndALineSayingWhy)
{
    registrar_->setResponseTimeout(300ms);
    portal_.setBindAnswer(Answer::Cancel);
    EXPECT_EQ(registerT(cmdKey + shiftKey), 0u);
    portal_.setBindAnswer(Answer::Refuse);
    EXPECT_EQ(registerT(cmdKey + shiftKey), 0u);

    portal_.setBindAnswer(Answer::Silence);
    QElapsedTimer waited;
    waited.start();
    EXPECT_EQ(registerT(cmdKey + shiftKey), 0u);
    EXPECT_GE(waited.elapsed(), 300);
    EXPECT_LT(waited.elapsed(), 3000);

    portal_.setBindAnswer(Answer::Grant);
    portal_.holdTrigger("LOGO+SHIFT+t");
    EXPECT_EQ(registerT(cmdKey + shiftKey), 0u);

    EXPECT_EQ(log_.lines(), std::vector<std::string>({
                                "Hot key LOGO+SHIFT+t refused: binding it with the desktop portal was cancelled",
                                "Hot key LOGO+SHIFT+t refused: binding it with the desktop portal was refused "
                                "(response 2)",
                                "Hot key LOGO+SHIFT+t refused: binding it with the desktop portal got no answer "
                                "within 300 ms",
                                "Hot key LOGO+SHIFT+t refused: the desktop portal gave it no trigger",
                            }));
    // Refused hot keys leave nothing behind to be bound again.
    EXPECT_NE(registerT(cmdKey + optionKey + shiftKey), 0u);
    EXPECT_EQ(triggersOf(lastBinding()), QStringList({"LOGO+ALT+SHIFT+t"}));
    EXPECT_EQ(portal_.record().sessionRequests.size(), 1u);
}

TEST_F(PortalHotKeyRegistrarTest, CombinationsItCannotBindAreRefusedWithoutAsking)
{
    EXPECT_EQ(registrar_->registerEventHotKey(56, cmdKey, {}), 0u) << "the Shift key itself";
    EXPECT_EQ(registrar_->registerEventHotKey(36, 0, {}), 0u) << "Return, plain";
    EXPECT_EQ(registerT(-1), 0u);
    EXPECT_TRUE(portal_.record().sessionRequests.empty());

    EXPECT_NE(registerT(cmdKey + shiftKey), 0u);
    EXPECT_EQ(registerT(cmdKey + shiftKey + 0x10000), 0u) << "the same keys: other bits are no modifiers";
    EXPECT_EQ(portal_.record().bindings.size(), 1u);
    EXPECT_EQ(log_.lines(), std::vector<std::string>({
                                "Hot key refused: key code 56 with modifiers 0x100 is no combination the desktop "
                                "portal can name",
                                "Hot key 36 with modifiers 0x0000 refused: without Super, Alt or Control it would "
                                "be taken from every program of the session",
                                "Hot key refused: key code 17 with modifiers 0xFFFFFFFF is no combination the "
                                "desktop portal can name",
                                "Hot key LOGO+SHIFT+t refused: it is registered already",
                            }));
}

TEST_F(PortalHotKeyRegistrarTest, ActivationsBecomePressesAndReleasesOfTheirHotKey)
{
    registerT(cmdKey + shiftKey, 1);
    const EventHotKeyRef restore = registerT(cmdKey + optionKey + shiftKey, 2);
    portal_.activate(session(), shortcutId(1));
    portal_.deactivate(session(), shortcutId(1));
    ASSERT_TRUE(processEventsUntil([&] { return events_.size() >= 2; }));

    EXPECT_EQ(events_[0].ref, restore);
    EXPECT_EQ(events_[0].id.signature, kSignature);
    EXPECT_EQ(events_[0].id.id, 2u);
    EXPECT_EQ(events_[0].transition, HotKeyTransition::Pressed);
    EXPECT_EQ(events_[1].ref, restore);
    EXPECT_EQ(events_[1].id.id, 2u);
    EXPECT_EQ(events_[1].transition, HotKeyTransition::Released);
}

TEST_F(PortalHotKeyRegistrarTest, UnregisteredHotKeysGoQuietAndTheLastOneClosesTheSession)
{
    const EventHotKeyRef create = registerT(cmdKey + shiftKey, 1);
    const EventHotKeyRef restore = registerT(cmdKey + optionKey + shiftKey, 2);
    const QString createId = shortcutId(0);
    const QString restoreId = shortcutId(1);
    registrar_->unregisterEventHotKey(create);
    registrar_->unregisterEventHotKey(create);
    registrar_->unregisterEventHotKey(0);
    registrar_->unregisterEventHotKey(restore + 100);
    EXPECT_EQ(portal_.record().bindings.size(), 2u) << "nothing bound again";

    portal_.activate(session(), createId);
    portal_.deactivate(session(), restoreId);
    ASSERT_TRUE(processEventsUntilARelease());
    ASSERT_EQ(events_.size(), 1u);
    EXPECT_EQ(events_[0].ref, restore);
    EXPECT_TRUE(portal_.record().closedSessions.isEmpty());

    registrar_->unregisterEventHotKey(restore);
    ASSERT_TRUE(processEventsUntil([&] { return !portal_.record().closedSessions.isEmpty(); }));
    EXPECT_EQ(portal_.record().closedSessions, QStringList({session(0)}));

    // A later registration starts over in a session of its own.
    EXPECT_NE(registerT(cmdKey + shiftKey), 0u);
    EXPECT_EQ(lastBinding().session, session(1));
    EXPECT_EQ(triggersOf(lastBinding()), QStringList({"LOGO+SHIFT+t"}));
}

TEST_F(PortalHotKeyRegistrarTest, AfterThePortalEndsTheSessionTheNextRegistrationBindsAllAgain)
{
    const EventHotKeyRef create = registerT(cmdKey + shiftKey, 1);
    const QString createId = shortcutId(0);
    portal_.closeFromPortalSide(session(0));
    const std::string stopped = "Hot keys stopped: the desktop portal closed their session";
    ASSERT_TRUE(processEventsUntil([&] { return !log_.lines().empty(); }));
    EXPECT_EQ(log_.lines(), std::vector<std::string>({stopped}));

    EXPECT_NE(registerT(cmdKey + optionKey + shiftKey, 2), 0u);
    EXPECT_EQ(lastBinding().session, session(1));
    EXPECT_EQ(triggersOf(lastBinding()), QStringList({"LOGO+SHIFT+t", "LOGO+ALT+SHIFT+t"}));

    portal_.activate(session(0), createId);
    portal_.deactivate(session(1), createId);
    ASSERT_TRUE(processEventsUntilARelease());
    ASSERT_EQ(events_.size(), 1u);
    EXPECT_EQ(events_[0].ref, create);
}

TEST(PortalHotKeyRegistrarAvailabilityTest, AvailableOnlyWithAPortalOnTheBus)
{
    test::DBusDaemon bus;
    const QString address = QString::fromStdString(bus.address());
    QDBusConnection client = QDBusConnection::connectToBus(address, QStringLiteral("availability-client"));
    EXPECT_FALSE(PortalHotKeyRegistrar::isAvailable(client));
    {
        test::LogCapture log;
        PortalHotKeyRegistrar registrar(client);
        EXPECT_EQ(registrar.registerEventHotKey(kT, cmdKey + shiftKey, {}), 0u);
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_EQ(log.lines()[0].rfind("Hot key LOGO+SHIFT+t refused: opening a global-shortcuts session with the "
                                       "desktop portal failed: org.freedesktop.DBus.Error.ServiceUnknown",
                                       0),
                  0u)
            << log.lines()[0];
    }
    {
        test::FakeGlobalShortcutsPortal portal(address);
        EXPECT_TRUE(PortalHotKeyRegistrar::isAvailable(client));
    }
    QDBusConnection::disconnectFromBus(client.name());

    QDBusConnection nowhere =
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), QStringLiteral("nowhere"));
    EXPECT_FALSE(PortalHotKeyRegistrar::isAvailable(nowhere));
    QDBusConnection::disconnectFromBus(nowhere.name());
}

} // namespace
} // namespace quilo
