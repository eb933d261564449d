#pragma once
#include <QPushButton>

#include <cstdint>

class QKeyEvent;

namespace quilo {

// The capture panel's button: while it has the focus it takes every key
// press, shortcuts included, and posts it as "KeyBraodcasterKeyEvent" with
// the Mac key code and Carbon modifiers (a key with no Mac key code as -1
// and its "KeyName"). Nothing reaches the button's own
// action or the window.
class KeyBroadcaster : public QPushButton {
    Q_OBJECT
public:
    using QPushButton::QPushButton;

    // The modifier masks of the key event, in the form the conversion table reads.
    static constexpr std::uint32_t NSAlphaShiftKeyMask = 0x00010000;
    static constexpr std::uint32_t NSShiftKeyMask = 0x00020000;
    static constexpr std::uint32_t NSControlKeyMask = 0x00040000;
    static constexpr std::uint32_t NSAlternateKeyMask = 0x00080000;
    static constexpr std::uint32_t NSCommandKeyMask = 0x00100000;
    static constexpr std::uint32_t NSNumericPadKeyMask = 0x00200000;

    void keyDown(const QKeyEvent& event);
    // Takes every event, so shortcuts are captured and go no further.
    bool performKeyEquivalent(const QKeyEvent& event);

    static std::int32_t cocoaToCarbonModifiers(std::uint32_t modifierFlags);
    // Qt's modifiers (Meta is the Super key on X11) and caps lock as masks.
    static std::uint32_t modifierFlags(const QKeyEvent& event);

protected:
    bool event(QEvent* event) override;

private:
    void broadcastKeyCode(std::int16_t keyCode, std::int32_t andModifiers);
    void broadcastKeyWithoutCode(const QString& name, std::int32_t andModifiers);

    // The press last taken as a shortcut, which then arrives as a key press too.
    quint64 takenTimestamp_ = 0;
    quint32 takenScanCode_ = 0;
};

} // namespace quilo
