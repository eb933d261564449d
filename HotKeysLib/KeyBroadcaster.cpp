#include "HotKeysLib/KeyBroadcaster.h"

#include "HotKeysLib/KeyCombo.h"
#include "HotKeysLib/NativeKeyCodes.h"
#include "foundation/NotificationCenter.h"

#include <QKeyEvent>
#include <QKeySequence>

#include <array>

namespace quilo {
namespace {

struct ModifierRow {
    std::uint32_t cocoaMask;
    std::uint32_t carbonBit;
};

// Scanned in order; the two empty rows never match.
constexpr std::array<ModifierRow, 6> cocoaToCarbon{{
    {KeyBroadcaster::NSCommandKeyMask, cmdKey},
    {KeyBroadcaster::NSAlternateKeyMask, optionKey},
    {KeyBroadcaster::NSControlKeyMask, controlKey},
    {KeyBroadcaster::NSShiftKeyMask, shiftKey},
    {0, 0},
    {0, 0},
}};

constexpr std::uint32_t kX11LockMask = 0x02;

// A modifier key on its own changes the modifiers; it is not a key press.
bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
        return true;
    default:
        return false;
    }
}

// The key's own name as the keyboard labels it ("Print", "Pause", "Media
// Play"), or its X keycode when the platform has no name for it.
QString keyName(const QKeyEvent& event)
{
    const QString name = QKeySequence(event.key()).toString(QKeySequence::NativeText);
    return name.isEmpty() || event.key() == Qt::Key_unknown
        ? QStringLiteral("Key %1").arg(event.nativeScanCode())
        : name;
}

} // namespace

std::int32_t KeyBroadcaster::cocoaToCarbonModifiers(std::uint32_t modifierFlags)
{
    std::uint32_t carbon = 0;
    for (const ModifierRow& row : cocoaToCarbon)
        if (modifierFlags & row.cocoaMask)
            carbon += row.carbonBit;
    return std::int32_t(carbon);
}

std::uint32_t KeyBroadcaster::modifierFlags(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    std::uint32_t flags = 0;
    if (modifiers & Qt::MetaModifier)
        flags |= NSCommandKeyMask;
    if (modifiers & Qt::AltModifier)
        flags |= NSAlternateKeyMask;
    if (modifiers & Qt::ControlModifier)
        flags |= NSControlKeyMask;
    if (modifiers & Qt::ShiftModifier)
        flags |= NSShiftKeyMask;
    if (modifiers & Qt::KeypadModifier)
        flags |= NSNumericPadKeyMask;
    if (event.nativeModifiers() & kX11LockMask)
        flags |= NSAlphaShiftKeyMask;
    return flags;
}

void KeyBroadcaster::keyDown(const QKeyEvent& event)
{
    if (isModifierKey(event.key()))
        return;
    const std::int32_t modifiers = cocoaToCarbonModifiers(modifierFlags(event));
    const auto keyCode = macKeyCodeForNativeKeyCode(event.nativeScanCode());
    if (keyCode)
        broadcastKeyCode(*keyCode, modifiers);
    else
        broadcastKeyWithoutCode(keyName(event), modifiers);
}

bool KeyBroadcaster::performKeyEquivalent(const QKeyEvent& event)
{
    keyDown(event);
    return true;
}

bool KeyBroadcaster::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride: {
        auto* key = static_cast<QKeyEvent*>(event);
        takenTimestamp_ = key->timestamp();
        takenScanCode_ = key->nativeScanCode();
        key->setAccepted(performKeyEquivalent(*key));
        return true;
    }
    case QEvent::KeyPress: {
        auto* key = static_cast<QKeyEvent*>(event);
        if (key->timestamp() != takenTimestamp_ || key->nativeScanCode() != takenScanCode_)
            keyDown(*key);
        return true;
    }
    case QEvent::KeyRelease:
        return true;
    default:
        return QPushButton::event(event);
    }
}

// A key with no Mac key code cannot be stored as a hot key; it goes out as key
// code -1 with its name, so the panel can say which key it refuses.
void KeyBroadcaster::broadcastKeyWithoutCode(const QString& name, std::int32_t andModifiers)
{
    NotificationCenter::defaultCenter().postNotificationName(
        QStringLiteral("KeyBraodcasterKeyEvent"), QVariant::fromValue(static_cast<QObject*>(this)),
        {{QStringLiteral("KeyCode"), QVariant::fromValue(std::int16_t(-1))},
         {QStringLiteral("Modifiers"), QVariant::fromValue(qint64(andModifiers))},
         {QStringLiteral("KeyName"), name}});
}

void KeyBroadcaster::broadcastKeyCode(std::int16_t keyCode, std::int32_t andModifiers)
{
    NotificationCenter::defaultCenter().postNotificationName(
        QStringLiteral("KeyBraodcasterKeyEvent"), QVariant::fromValue(static_cast<QObject*>(this)),
        {{QStringLiteral("KeyCode"), QVariant::fromValue(keyCode)},
         {QStringLiteral("Modifiers"), QVariant::fromValue(qint64(andModifiers))}});
}

} // namespace quilo
