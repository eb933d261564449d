#pragma once
#include "HotKeysLib/HotKeyRegistrar.h"
#include "HotKeysLib/KeyCombo.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <array>
#include <cstdint>

namespace quilo {

class HotKeyRegistration;
struct Notification;
class UserDefaults;

// The user's hot keys for the three actions, kept in the "Hot Keys" default
// as one dictionary of records {"Key", "Modifier", "Use"} by action name, and
// the registration of the enabled ones with the application object. Turns
// the application's "RTZHotKeyPressed" into "RTZHandleHotKeyEvent". Main
// thread only.
class HotKeysController {
public:
    // The process's one store, over the application object and the standard
    // user defaults. The first call creates it.
    static HotKeysController& sharedInstance();

    HotKeysController(HotKeyRegistration& application, UserDefaults& defaults);
    ~HotKeysController();
    HotKeysController(const HotKeysController&) = delete;
    HotKeysController& operator=(const HotKeysController&) = delete;

    // Create Thumbnails, Restore Thumbnails, Save as ICNS Files: the order of
    // the reference slots, of registration and of the in-use test.
    QStringList hotKeyNames() const;
    QVariantMap defaultHotKeysDict() const;
    QVariantMap hotKeysDict() const;
    static QVariantMap hotKeyDictForKey(std::int16_t keyCode, std::int32_t andModifier, bool use);

    static KeyCombo keyComboForHotKeyDict(const QVariantMap& hotKeyDict);
    KeyCombo keyComboForKeyKey(const QString& name) const;
    QString userDescriptionForHotKeyKey(const QString& name) const;
    bool usingHotKey(const QString& name) const;

    void setUsingHotKey(const QString& name, bool use);
    void updateDefaultsForHotKey(const QString& name, std::int16_t keyCode, std::int32_t andModifier, bool use);
    void removeHotKeyFromDefaults(const QString& name);

    // Whether another action's record holds the combination, switched on or not.
    bool hotKeyInUse(std::int16_t keyCode, std::int32_t modifier, const QString& disregardingKey) const;

    void registerHotKeys();
    void unregisterHotKeys();

    const std::array<EventHotKeyRef, 3>& hotKeyRefs() const { return hotKeyRefs_; }

private:
    void hotKeyPressed(const Notification& notification);
    void storeHotKeysDict(const QVariantMap& hotKeys);

    HotKeyRegistration& application_;
    UserDefaults& defaults_;
    std::array<EventHotKeyRef, 3> hotKeyRefs_{};
};

} // namespace quilo
