#include "hotkeys/HotKeysController.h"

#include "foundation/Log.h"
#include "foundation/NotificationCenter.h"
#include "foundation/QuiloKeys.h"
#include "foundation/UserDefaults.h"
#include "hotkeys/QuiloApplication.h"

namespace quilo {
namespace {

const QString kKey = QStringLiteral("Key");
const QString kModifier = QStringLiteral("Modifier");
const QString kUse = QStringLiteral("Use");

// The shared store, created on first use and never destroyed.
HotKeysController* gHotKeysController = nullptr;

// A missing record or key reads as 0, as a message to nil would.
std::int16_t recordKey(const QVariantMap& record) { return std::int16_t(record.value(kKey).toInt()); }
std::int32_t recordModifier(const QVariantMap& record) { return std::int32_t(record.value(kModifier).toLongLong()); }

} // namespace

HotKeysController& HotKeysController::sharedInstance()
{
    if (!gHotKeysController)
        gHotKeysController
            = new HotKeysController(QuiloApplication::sharedApplication(), UserDefaults::standardUserDefaults());
    return *gHotKeysController;
}

HotKeysController::HotKeysController(HotKeyRegistration& application, UserDefaults& defaults)
    : application_(application)
    , defaults_(defaults)
{
    if (gHotKeysController)
        logLine("WARNING: Allocating multiple instances of HotKeysController!");
    auto& center = NotificationCenter::defaultCenter();
    center.addObserver(this, QStringLiteral("RTZHotKeyPressed"),
                       [this](const Notification& notification) { hotKeyPressed(notification); });
    // Nothing posts these two and nothing here answers them; the subscriptions
    // are kept as they always were.
    center.addObserver(this, QStringLiteral("RTZApplicationLaunched"), [](const Notification&) {});
    center.addObserver(this, QStringLiteral("RTZApplicationTerminated"), [](const Notification&) {});
}

HotKeysController::~HotKeysController()
{
    NotificationCenter::defaultCenter().removeObserver(this);
}

QStringList HotKeysController::hotKeyNames() const
{
    return {RTZHotKey_CreateThumbnails, RTZHotKey_RestoreThumbnails, RTZHotKey_SaveAsICNS};
}

QVariantMap HotKeysController::defaultHotKeysDict() const
{
    constexpr std::int16_t kT = 17;
    return {{RTZHotKey_CreateThumbnails, hotKeyDictForKey(kT, cmdKey + shiftKey, true)},
            {RTZHotKey_RestoreThumbnails, hotKeyDictForKey(kT, cmdKey + optionKey + shiftKey, true)},
            // Off, but its combination stays reserved.
            {RTZHotKey_SaveAsICNS, hotKeyDictForKey(kT, cmdKey + controlKey, false)}};
}

QVariantMap HotKeysController::hotKeysDict() const { return defaults_.dictionaryForKey(RTZHotKeysKey); }

QVariantMap HotKeysController::hotKeyDictForKey(std::int16_t keyCode, std::int32_t andModifier, bool use)
{
    return {{kKey, QVariant::fromValue(keyCode)}, {kModifier, QVariant::fromValue(andModifier)}, {kUse, use}};
}

KeyCombo HotKeysController::keyComboForHotKeyDict(const QVariantMap& hotKeyDict)
{
    return KeyCombo::keyComboWithKeyCode(recordKey(hotKeyDict), recordModifier(hotKeyDict));
}

KeyCombo HotKeysController::keyComboForKeyKey(const QString& name) const
{
    return keyComboForHotKeyDict(hotKeysDict().value(name).toMap());
}

QString HotKeysController::userDescriptionForHotKeyKey(const QString& name) const
{
    return keyComboForKeyKey(name).userDisplayRep();
}

bool HotKeysController::usingHotKey(const QString& name) const
{
    return hotKeysDict().value(name).toMap().value(kUse).toBool();
}

void HotKeysController::setUsingHotKey(const QString& name, bool use)
{
    QVariantMap hotKeys = hotKeysDict();
    QVariantMap record = hotKeys.value(name).toMap();
    record.insert(kUse, use);
    hotKeys.insert(name, record);
    storeHotKeysDict(hotKeys);
}

void HotKeysController::updateDefaultsForHotKey(const QString& name, std::int16_t keyCode, std::int32_t andModifier,
                                                bool use)
{
    QVariantMap hotKeys = hotKeysDict();
    hotKeys.insert(name, hotKeyDictForKey(keyCode, andModifier, use));
    storeHotKeysDict(hotKeys);
}

void HotKeysController::removeHotKeyFromDefaults(const QString& name)
{
    QVariantMap hotKeys = hotKeysDict();
    hotKeys.remove(name);
    storeHotKeysDict(hotKeys);
}

bool HotKeysController::hotKeyInUse(std::int16_t keyCode, std::int32_t modifier, const QString& disregardingKey) const
{
    const QVariantMap hotKeys = hotKeysDict();
    for (const QString& name : hotKeyNames()) {
        if (name == disregardingKey)
            continue;
        const QVariantMap record = hotKeys.value(name).toMap();
        if (std::uint16_t(recordKey(record)) == std::uint16_t(keyCode) && recordModifier(record) == modifier)
            return true;
    }
    return false;
}

void HotKeysController::registerHotKeys()
{
    unregisterHotKeys();
    const QVariantMap hotKeys = hotKeysDict();
    const QStringList names = hotKeyNames();
    for (std::size_t i = 0; i < hotKeyRefs_.size(); ++i) {
        const QVariantMap record = hotKeys.value(names[int(i)]).toMap();
        // A slot switched off keeps whatever it held.
        if (record.value(kUse).toBool())
            hotKeyRefs_[i] = application_.registerHotKey(recordKey(record), recordModifier(record), names[int(i)]);
    }
}

void HotKeysController::unregisterHotKeys()
{
    for (EventHotKeyRef ref : hotKeyRefs_)
        application_.unregisterHotKey(ref);
}

void HotKeysController::hotKeyPressed(const Notification& notification)
{
    NotificationCenter::defaultCenter().postNotificationName(QStringLiteral("RTZHandleHotKeyEvent"),
                                                             notification.userInfo.value("KeyDescription"));
}

void HotKeysController::storeHotKeysDict(const QVariantMap& hotKeys) { defaults_.setObject(hotKeys, RTZHotKeysKey); }

} // namespace quilo
