// Stored Mac key codes and the X keycodes of the same keys.
#include "HotKeysLib/KeyCombo.h"
#include "HotKeysLib/NativeKeyCodes.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

TEST(X11KeyCodes, EveryNamedKeyHasAnXKeycode)
{
    const QVariantMap* names = KeyCombo::keyCodesDictionary();
    ASSERT_TRUE(names);
    for (const QString& code : names->keys()) {
        const std::optional<std::uint32_t> native = nativeKeyCodeForMacKeyCode(code.toInt());
        ASSERT_TRUE(native) << code.toStdString() << " " << names->value(code).toString().toStdString();
        if (code != "63") { // Fn is known to the kernel alone
            EXPECT_LE(*native, 255u) << code.toStdString();
        }
    }
}

TEST(X11KeyCodes, EveryXKeycodeLeadsBackToItsMacKey)
{
    int mapped = 0;
    for (std::int16_t mac = 0; mac < 128; ++mac)
        if (const std::optional<std::uint32_t> native = nativeKeyCodeForMacKeyCode(mac)) {
            EXPECT_EQ(macKeyCodeForNativeKeyCode(*native), mac);
            ++mapped;
        }
    EXPECT_EQ(mapped, 121) << "the named keys and the five JIS keys";
}

TEST(X11KeyCodes, KeysLandWhereAUsKeyboardHasThem)
{
    const std::pair<std::int16_t, std::uint32_t> keys[] = {
        {0, 38},   // A
        {17, 28},  // T
        {49, 65},  // Space
        {122, 67}, // F1
        {123, 113}, {124, 114}, {125, 116}, {126, 111}, // arrows
        {50, 49},   // the key left of 1
        {10, 94},   // ISO: the key right of the left Shift
        {55, 133}, {54, 134}, {58, 64}, {59, 37}, // Command, Right Command, Option, Control
        {76, 104}, {36, 36}, // Keypad Enter, Return
        {93, 132}, {94, 97}, // JIS Yen, Underscore
    };
    for (const auto& [mac, x] : keys) {
        EXPECT_EQ(nativeKeyCodeForMacKeyCode(mac), x) << mac;
        EXPECT_EQ(macKeyCodeForNativeKeyCode(x), mac) << x;
    }
}

TEST(X11KeyCodes, CodesOfNoKeyHaveNone)
{
    for (std::int32_t mac : {-1, 66, 68, 70, 77, 108, 112, 127, 300, 65535})
        EXPECT_EQ(nativeKeyCodeForMacKeyCode(mac), std::nullopt) << mac;
    for (std::uint32_t x : {0u, 8u, 255u, 100000u})
        EXPECT_EQ(macKeyCodeForNativeKeyCode(x), std::nullopt) << x;
}

} // namespace
} // namespace quilo
