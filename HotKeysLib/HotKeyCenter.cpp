#include "HotKeysLib/HotKeyCenter.h"

namespace quilo {
namespace {

constexpr OSType kHotKeySignature = fourCharCode("HKyC");
constexpr int kSystemDefined = 14;
constexpr std::int16_t kHotKeyPressedSubtype = 6;
constexpr std::int16_t kHotKeyReleasedSubtype = 9;

// The lines of the assertions are part of what a failure reports.
constexpr int kNameLine = 103;
constexpr int kComboLine = 104;
constexpr int kTargetLine = 105;
constexpr int kActionLine = 106;
constexpr int kSupportLine = 219;
constexpr int kEventClassLine = 220;
constexpr int kSignatureLine = 233;
constexpr int kRecordLine = 236;
constexpr int kRegisterLine = 266;
constexpr int kUnregisterLine = 292;

void assertParameter(bool condition, const char* text, int lineNumber)
{
    if (!condition)
        throw HotKeyCenterAssertion(std::string("Invalid parameter not satisfying: ") + text, lineNumber);
}

void assertThat(bool condition, const char* description, int lineNumber)
{
    if (!condition)
        throw HotKeyCenterAssertion(description, lineNumber);
}

// The registrar's presses and releases, as the Carbon events they were.
OSStatus keyEventHandler(HotKeyCenter& center, const HotKeyEvent& event)
{
    const std::uint32_t kind =
        event.transition == HotKeyTransition::Pressed ? kEventHotKeyPressed : kEventHotKeyReleased;
    return OSStatus(std::int16_t(center.handleHotKeyEvent({kEventClassKeyboard, kind, event.id})));
}

} // namespace

HotKeyCenter& HotKeyCenter::sharedCenter()
{
    static HotKeyCenter* const center = new HotKeyCenter(makeSystemHotKeyRegistrar());
    return *center;
}

HotKeyCenter::HotKeyCenter(std::unique_ptr<HotKeyRegistrar> registrar) : mRegistrar(std::move(registrar))
{
    if (systemSupportsHotKeys())
        mRegistrar->setEventHandler([this](const HotKeyEvent& event) { keyEventHandler(*this, event); });
}

// Carbon asked for Mac OS X 10.2, the first to deliver hot-key events. Here
// every registrar delivers its presses as events, so what counts is that
// the centre has one.
bool HotKeyCenter::systemSupportsHotKeys() const
{
    return mRegistrar != nullptr;
}

bool HotKeyCenter::addHotKey(const QString& name, const std::optional<KeyCombo>& combo, void* target, Action action)
{
    assertParameter(!name.isNull(), "name != nil", kNameLine);
    assertParameter(combo.has_value(), "combo != nil", kComboLine);
    assertParameter(target != nullptr, "target != nil", kTargetLine);
    assertParameter(bool(action), "action != nil", kActionLine);

    if (mHotKeys.contains(name))
        removeHotKey(name);
    auto record = std::make_unique<HotKeyData>();
    record->mCombo = *combo;
    record->mTarget = target;
    record->mAction = std::move(action);
    // Stands for the record's address: never 0, never reused.
    record->mId = ++mLastId;
    HotKeyData* hk = record.get();
    mHotKeys[name] = std::move(record);
    return registerHotKeyIfNeeded(hk);
}

void HotKeyCenter::removeHotKey(const QString& name)
{
    const auto found = mHotKeys.find(name);
    if (found == mHotKeys.end())
        return;
    unregisterHotKeyIfNeeded(found->second.get());
    mHotKeys.erase(found);
}

QStringList HotKeyCenter::allNames() const
{
    QStringList names;
    for (const auto& [name, record] : mHotKeys)
        names.append(name);
    return names;
}

std::optional<KeyCombo> HotKeyCenter::keyComboForName(const QString& name) const
{
    const auto found = mHotKeys.find(name);
    if (found == mHotKeys.end())
        return std::nullopt;
    return found->second->mCombo;
}

// The flag is stored only after the loop, so turning on registers nothing
// while the centre still counts as off.
void HotKeyCenter::setEnabled(bool enabled)
{
    for (auto& [name, record] : mHotKeys) {
        if (enabled)
            registerHotKeyIfNeeded(record.get());
        else
            unregisterHotKeyIfNeeded(record.get());
    }
    mEnabled = enabled;
}

void HotKeyCenter::sendEvent(const ApplicationEvent& event)
{
    if (systemSupportsHotKeys() || event.type != kSystemDefined)
        return;
    if (event.subtype == kHotKeyPressedSubtype && event.data1 != 0)
        hotKeyDownWithRef(EventHotKeyRef(event.data1));
    else if (event.subtype == kHotKeyReleasedSubtype && event.data1 != 0)
        hotKeyUpWithRef(EventHotKeyRef(event.data1));
}

OSStatus HotKeyCenter::handleHotKeyEvent(const CarbonEvent& event)
{
    assertThat(systemSupportsHotKeys(), "", kSupportLine);
    assertThat(event.eventClass == kEventClassKeyboard, "Got unhandled event class", kEventClassLine);
    if (!event.directObject)
        return eventParameterNotFoundErr;
    assertThat(event.directObject->signature == kHotKeySignature, "Got unknown hot key", kSignatureLine);
    assertThat(event.directObject->id != 0, "Got bad hot key", kRecordLine);
    // A record removed since is no one's key any more.
    if (HotKeyData* hk = findHotKeyWithId(event.directObject->id)) {
        if (event.eventKind == kEventHotKeyPressed)
            hotKeyDown(hk);
        else if (event.eventKind == kEventHotKeyReleased)
            hotKeyUp(hk);
    }
    return 0;
}

bool HotKeyCenter::registerHotKeyIfNeeded(HotKeyData* hk)
{
    assertParameter(hk != nullptr, "hk != nil", kRegisterLine);
    if (!mEnabled || hk->mRegistered || !hk->mCombo.isValid())
        return true;
    if (!mRegistrar)
        return false;
    // Only the low 16 bits of the modifiers go to the system.
    const EventHotKeyRef ref = mRegistrar->registerEventHotKey(
        hk->mCombo.keyCode(), std::int16_t(hk->mCombo.modifiers()), EventHotKeyID{kHotKeySignature, hk->mId});
    if (ref == 0)
        return false;
    hk->mRef = ref;
    hk->mRegistered = true;
    return true;
}

// mRegistered stays set: a record registered once never registers again.
void HotKeyCenter::unregisterHotKeyIfNeeded(HotKeyData* hk)
{
    assertParameter(hk != nullptr, "hk != nil", kUnregisterLine);
    if (hk->mRegistered && hk->mRef != 0)
        mRegistrar->unregisterEventHotKey(hk->mRef);
}

// The action may remove its own hot key, so it runs from a copy.
void HotKeyCenter::hotKeyDown(HotKeyData* hk)
{
    const Action action = hk->mAction;
    action(*this);
}

void HotKeyCenter::hotKeyUp(HotKeyData*) {}

void HotKeyCenter::hotKeyDownWithRef(EventHotKeyRef ref)
{
    if (HotKeyData* hk = findHotKeyWithRef(ref))
        hotKeyDown(hk);
}

void HotKeyCenter::hotKeyUpWithRef(EventHotKeyRef) {}

HotKeyCenter::HotKeyData* HotKeyCenter::findHotKeyWithRef(EventHotKeyRef ref)
{
    for (auto& [name, record] : mHotKeys)
        if (record->mRef == ref)
            return record.get();
    return nullptr;
}

HotKeyCenter::HotKeyData* HotKeyCenter::findHotKeyWithId(std::uint32_t id)
{
    for (auto& [name, record] : mHotKeys)
        if (record->mId == id)
            return record.get();
    return nullptr;
}

} // namespace quilo
