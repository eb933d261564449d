#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>

#include <cstdint>

namespace quilo {

// Carbon's modifier bits, as every stored or passed modifier set holds them.
constexpr std::int32_t cmdKey = 0x0100;
constexpr std::int32_t shiftKey = 0x0200;
constexpr std::int32_t optionKey = 0x0800;
constexpr std::int32_t controlKey = 0x1000;

// One keyboard shortcut: a Mac virtual key code (position on the keyboard,
// whatever the layout) and Carbon modifier bits; -1 in either is no
// combination. An immutable value, so a copy is as good as the original.
class KeyCombo {
public:
    // The cleared combination.
    KeyCombo() : KeyCombo(-1, -1) {}
    KeyCombo(std::int16_t keyCode, std::int32_t andModifiers) : mKeyCode(keyCode), mModifiers(andModifiers) {}

    static KeyCombo keyCombo() { return {}; }
    static KeyCombo clearKeyCombo() { return keyComboWithKeyCode(-1, -1); }
    static KeyCombo keyComboWithKeyCode(std::int16_t keyCode, std::int32_t andModifiers)
    {
        return {keyCode, andModifiers};
    }

    std::int16_t keyCode() const { return mKeyCode; }
    std::int32_t modifiers() const { return mModifiers; }
    // Set at all: neither field negative. A bare key (modifiers 0) is valid.
    bool isValid() const { return mKeyCode >= 0 && mModifiers >= 0; }
    // Same key and the same low 16 bits of modifiers.
    bool isEqual(const KeyCombo& other) const
    {
        return other.mKeyCode == mKeyCode && std::uint16_t(other.mModifiers) == std::uint16_t(mModifiers);
    }
    bool operator==(const KeyCombo& other) const { return isEqual(other); }

    // The modifiers' glyphs and then the key's name ("⌘⇧ T"), or "(None)".
    QString userDisplayRep() const;
    QString description() const { return userDisplayRep(); }

    // The two values in order, 16 then 32 bits, as the preferences keep them.
    QByteArray encodeWithCoder() const;
    // The cleared combination for anything that is not such an archive.
    static KeyCombo initWithCoder(const QByteArray& archive);

    // The glyphs of the modifiers in command, option, control, shift order,
    // and a blank after them; empty for none.
    static QString stringForModifiers(std::int32_t modifiers);
    // The key's name from the key-name list, else its code in hexadecimal.
    static QString stringForKeyCode(std::int16_t keyCode);
    // The key-name list (":/KeyCodes.plist"), read once; null when missing.
    static const QVariantMap* keyCodesDictionary();
    // Where the list is read from; tests point it elsewhere. Forgets the list.
    static void setKeyCodesResource(const QString& path);

private:
    std::int16_t mKeyCode;
    std::int32_t mModifiers;
};

} // namespace quilo
