// The hot-key centre over a registrar the test controls: what it registers,
// what a press sends, and the quirks it keeps (a key turned off and on stays
// silent, assertions with their texts).
#include "HotKeysLib/HotKeyCenter.h"
#include "tests/support/RecordingHotKeyRegistrar.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

using test::RecordingHotKeyRegistrar;
using Registration = RecordingHotKeyRegistrar::Registration;

const KeyCombo kCommandShiftT(17, cmdKey + shiftKey);
const KeyCombo kCommandOptionShiftT(17, cmdKey + optionKey + shiftKey);

struct Receiver {
    std::vector<HotKeyCenter*> senders;
    void pressed(HotKeyCenter& sender) { senders.push_back(&sender); }
};

class HotKeyCenterTest : public ::testing::Test {
protected:
    HotKeyCenterTest()
    {
        auto registrar = std::make_unique<RecordingHotKeyRegistrar>();
        registrar_ = registrar.get();
        center_ = std::make_unique<HotKeyCenter>(std::move(registrar));
    }

    bool add(const QString& name, const KeyCombo& combo)
    {
        return center_->addHotKey(name, combo, &receiver_, &Receiver::pressed);
    }

    // What the system holds: registrations it accepted and that were not
    // given back.
    std::vector<Registration> live() const
    {
        std::vector<Registration> held;
        for (const Registration& registration : registrar_->registrations)
            if (registration.ref != 0 && std::ranges::count(registrar_->unregistered, registration.ref) == 0)
                held.push_back(registration);
        return held;
    }

    EventHotKeyRef lastRef() const { return registrar_->registrations.back().ref; }

    // The system reports a key, with the identifier it was registered with,
    // as long as it holds it.
    void press(EventHotKeyRef ref, HotKeyTransition transition = HotKeyTransition::Pressed)
    {
        for (const Registration& registration : live())
            if (registration.ref == ref)
                registrar_->deliver(ref, transition, registration.id);
    }

    RecordingHotKeyRegistrar* registrar_;
    std::unique_ptr<HotKeyCenter> center_;
    Receiver receiver_;
};

TEST_F(HotKeyCenterTest, APressSendsTheActionToTheTargetAndAReleaseSendsNothing)
{
    EXPECT_TRUE(add("Create Thumbnails", kCommandShiftT));
    ASSERT_EQ(live().size(), 1u);
    const Registration registration = live()[0];
    EXPECT_EQ(registration.keyCode, 17);
    EXPECT_EQ(registration.modifiers, cmdKey + shiftKey);
    EXPECT_EQ(registration.id.signature, 0x484B7943u);
    EXPECT_NE(registration.id.id, 0u);

    press(registration.ref);
    EXPECT_EQ(receiver_.senders, std::vector<HotKeyCenter*>{center_.get()});
    press(registration.ref, HotKeyTransition::Released);
    EXPECT_EQ(receiver_.senders.size(), 1u);

    EXPECT_EQ(center_->allNames(), QStringList{"Create Thumbnails"});
    EXPECT_EQ(center_->keyComboForName("Create Thumbnails"), kCommandShiftT);
    EXPECT_EQ(center_->keyComboForName("Save as ICNS Files"), std::nullopt);
}

TEST_F(HotKeyCenterTest, NamesAreBoundOnceAndRemovingUnregisters)
{
    add("Restore Thumbnails", kCommandShiftT);
    const EventHotKeyRef first = lastRef();
    int replaced = 0;
    EXPECT_TRUE(center_->addHotKey("Restore Thumbnails", kCommandOptionShiftT, &receiver_,
                                   [&](HotKeyCenter&) { ++replaced; }));
    EXPECT_EQ(registrar_->unregistered, std::vector<EventHotKeyRef>{first});
    EXPECT_EQ(center_->allNames(), QStringList{"Restore Thumbnails"});
    EXPECT_EQ(center_->keyComboForName("Restore Thumbnails"), kCommandOptionShiftT);
    press(lastRef());
    EXPECT_EQ(replaced, 1);
    EXPECT_TRUE(receiver_.senders.empty());

    const EventHotKeyRef second = lastRef();
    center_->removeHotKey("Restore Thumbnails");
    center_->removeHotKey("never added");
    EXPECT_EQ(registrar_->unregistered, (std::vector<EventHotKeyRef>{first, second}));
    EXPECT_TRUE(center_->allNames().isEmpty());
    EXPECT_EQ(center_->keyComboForName("Restore Thumbnails"), std::nullopt);
}

TEST_F(HotKeyCenterTest, ARefusedKeyStaysAndIsTriedAgainWhenEnabling)
{
    registrar_->refusedCombinations.insert({17, cmdKey + shiftKey});
    EXPECT_FALSE(add("Create Thumbnails", kCommandShiftT));
    EXPECT_EQ(center_->allNames(), QStringList{"Create Thumbnails"});
    registrar_->refusedCombinations.clear();
    center_->setEnabled(true);
    ASSERT_EQ(live().size(), 1u);
    press(lastRef());
    EXPECT_EQ(receiver_.senders.size(), 1u);
}

// The flag is stored after the records are walked, and a record once
// registered counts as registered for good.
TEST_F(HotKeyCenterTest, TurningOffAndOnAgainLeavesKeysSilent)
{
    add("Create Thumbnails", kCommandShiftT);
    const EventHotKeyRef ref = lastRef();
    center_->setEnabled(false);
    EXPECT_FALSE(center_->enabled());
    EXPECT_EQ(registrar_->unregistered, std::vector<EventHotKeyRef>{ref});

    EXPECT_TRUE(add("Restore Thumbnails", kCommandOptionShiftT)) << "nothing to register while off";
    center_->setEnabled(true);
    EXPECT_TRUE(center_->enabled());
    EXPECT_TRUE(live().empty()) << "turning on registers while the centre still counts as off";
    center_->setEnabled(true);
    ASSERT_EQ(live().size(), 1u) << "only the key never registered comes back";
    EXPECT_EQ(live()[0].keyCode, 17);
    EXPECT_EQ(live()[0].modifiers, cmdKey + optionKey + shiftKey);
}

// Bad arguments and events fail their assertions, in this order, before
// anything is registered or sent.
TEST_F(HotKeyCenterTest, BadArgumentsAndEventsFailTheirAssertions)
{
    const HotKeyCenter::Action action = [](HotKeyCenter&) {};
    add("Create Thumbnails", kCommandShiftT);
    const EventHotKeyID id = live()[0].id;
    using Event = HotKeyCenter::CarbonEvent;
    const std::string unsatisfied = "Invalid parameter not satisfying: ";
    const std::pair<std::function<void()>, std::string> failures[] = {
        {[&] { center_->addHotKey(QString(), std::nullopt, nullptr, nullptr); }, unsatisfied + "name != nil"},
        {[&] { center_->addHotKey("", std::nullopt, nullptr, nullptr); }, unsatisfied + "combo != nil"},
        {[&] { center_->addHotKey("Name", kCommandShiftT, nullptr, action); }, unsatisfied + "target != nil"},
        {[&] { center_->addHotKey("Name", kCommandShiftT, &receiver_, nullptr); }, unsatisfied + "action != nil"},
        {[&] { center_->addHotKey<Receiver>("Name", kCommandShiftT, &receiver_, nullptr); }, unsatisfied + "action != nil"},
        {[&] { center_->handleHotKeyEvent(Event{fourCharCode("mous"), kEventHotKeyPressed, id}); },
         "Got unhandled event class"},
        {[&] { center_->handleHotKeyEvent(Event{kEventClassKeyboard, 5, EventHotKeyID{1, id.id}}); },
         "Got unknown hot key"},
        {[&] { center_->handleHotKeyEvent(Event{kEventClassKeyboard, 5, EventHotKeyID{id.signature, 0}}); },
         "Got bad hot key"},
    };
    for (const auto& [call, description] : failures) {
        try {
            call();
            ADD_FAILURE() << "no assertion for: " << description;
        } catch (const HotKeyCenterAssertion& assertion) {
            EXPECT_EQ(assertion.what(), description);
        }
    }
    EXPECT_EQ(center_->allNames(), QStringList{"Create Thumbnails"});
    EXPECT_EQ(live().size(), 1u);
    EXPECT_EQ(center_->handleHotKeyEvent(Event{kEventClassKeyboard, kEventHotKeyPressed, std::nullopt}),
              eventParameterNotFoundErr);
    EXPECT_EQ(center_->handleHotKeyEvent(Event{kEventClassKeyboard, kEventHotKeyReleased, id}), 0);
    EXPECT_EQ(center_->handleHotKeyEvent(Event{kEventClassKeyboard, 7, id}), 0);
    EXPECT_EQ(center_->handleHotKeyEvent(Event{kEventClassKeyboard, 5, EventHotKeyID{id.signature, id.id + 1}}), 0)
        << "a record that does not exist";
    EXPECT_TRUE(receiver_.senders.empty());

    EXPECT_EQ(center_->handleHotKeyEvent(Event{kEventClassKeyboard, kEventHotKeyPressed, id}), 0);
    EXPECT_EQ(receiver_.senders.size(), 1u);
    center_->removeHotKey("Create Thumbnails");
    EXPECT_EQ(center_->handleHotKeyEvent(Event{kEventClassKeyboard, kEventHotKeyPressed, id}), 0);
    EXPECT_EQ(receiver_.senders.size(), 1u) << "a removed record's identifier";
}

} // namespace
} // namespace quilo
