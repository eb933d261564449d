#pragma once

#include "HotKeysLib/HotKeyRegistrar.h"
#include "HotKeysLib/KeyCombo.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace quilo {

using OSStatus = std::int32_t;

// Hot-key events as the Carbon Event Manager classed them.
constexpr OSType kEventClassKeyboard = fourCharCode("keyb");
constexpr std::uint32_t kEventHotKeyPressed = 5;
constexpr std::uint32_t kEventHotKeyReleased = 6;
// What reading an event parameter the event does not carry gives.
constexpr OSStatus eventParameterNotFoundErr = -9870;

// A broken assertion of the hot-key centre: a programmer's error, raised and
// left for no one to catch. what() is the description.
class HotKeyCenterAssertion : public std::logic_error {
public:
    HotKeyCenterAssertion(const std::string& description, int lineNumber)
        : std::logic_error(description), mLineNumber(lineNumber)
    {
    }
    const char* file() const { return "HotKeysLib/HotKeyCenter"; }
    int lineNumber() const { return mLineNumber; }

private:
    int mLineNumber;
};

// System-wide hot keys by name, each sending an action to a target when
// pressed. Quilo's own three hot keys do not go through it (the application
// object registers those); it is a complete alternative the application can
// switch to. Main thread only.
class HotKeyCenter {
public:
    // The action, sent with the centre as its one argument; empty is nil.
    using Action = std::function<void(HotKeyCenter& sender)>;

    // A Carbon event as the centre reads it: its class and kind, and the
    // hot key's identifier as the direct object, if the event carries one.
    struct CarbonEvent {
        OSType eventClass = 0;
        std::uint32_t eventKind = 0;
        std::optional<EventHotKeyID> directObject;
    };

    // An event an application object dispatches; type 14 is system-defined,
    // and its subtypes 6 and 9 a hot key pressed and released, with the
    // hot key's reference in data1.
    struct ApplicationEvent {
        int type = 0;
        std::int16_t subtype = 0;
        std::intptr_t data1 = 0;
    };

    // Created on first use, on the session's registrar, and never destroyed.
    static HotKeyCenter& sharedCenter();

    // The centre takes the registrar's events. A null registrar stands for
    // a system without hot keys: nothing registers, and events can only come
    // through sendEvent.
    explicit HotKeyCenter(std::unique_ptr<HotKeyRegistrar> registrar);
    HotKeyCenter(const HotKeyCenter&) = delete;
    HotKeyCenter& operator=(const HotKeyCenter&) = delete;

    // Binds the name to the combination, replacing what it was bound to. The
    // target is the receiver the action is meant for, not owned: it must
    // outlive the binding. False only when the system refused the key; an
    // invalid combination is kept and never registered.
    bool addHotKey(const QString& name, const std::optional<KeyCombo>& combo, void* target, Action action);
    // The same with a member function of the target as the action.
    template <typename Target>
    bool addHotKey(const QString& name, const std::optional<KeyCombo>& combo, Target* target,
                   void (Target::*action)(HotKeyCenter&))
    {
        Action bound;
        if (action)
            bound = [target, action](HotKeyCenter& sender) { (target->*action)(sender); };
        return addHotKey(name, combo, static_cast<void*>(target), std::move(bound));
    }
    void removeHotKey(const QString& name);
    QStringList allNames() const;
    std::optional<KeyCombo> keyComboForName(const QString& name) const;

    // Turning the centre off and on again leaves the keys it had registered
    // silent: a key counts as registered for good once it was.
    void setEnabled(bool enabled);
    bool enabled() const { return mEnabled; }

    // For an application that gets hot keys as its own events; does nothing
    // while the centre takes them from its registrar.
    void sendEvent(const ApplicationEvent& event);
    // 0 once handled; eventParameterNotFoundErr for an event without an
    // identifier. Events that cannot be the centre's raise an assertion.
    OSStatus handleHotKeyEvent(const CarbonEvent& event);

private:
    struct HotKeyData {
        bool mRegistered = false;
        EventHotKeyRef mRef = 0;
        KeyCombo mCombo;
        void* mTarget = nullptr;
        Action mAction;
        // Names the record in the hot key's identifier.
        std::uint32_t mId = 0;
    };

    bool systemSupportsHotKeys() const;
    bool registerHotKeyIfNeeded(HotKeyData* hk);
    void unregisterHotKeyIfNeeded(HotKeyData* hk);
    void hotKeyDown(HotKeyData* hk);
    void hotKeyUp(HotKeyData* hk);
    void hotKeyDownWithRef(EventHotKeyRef ref);
    void hotKeyUpWithRef(EventHotKeyRef ref);
    HotKeyData* findHotKeyWithRef(EventHotKeyRef ref);
    HotKeyData* findHotKeyWithId(std::uint32_t id);

    std::unique_ptr<HotKeyRegistrar> mRegistrar;
    bool mEnabled = true;
    std::map<QString, std::unique_ptr<HotKeyData>> mHotKeys;
    std::uint32_t mLastId = 0;
};

} // namespace quilo
