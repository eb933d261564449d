// The names the desktop portal is given for keys and combinations, checked
// against XKB's own keysym names and a US keymap.
#include "HotKeysLib/KeyCombo.h"
#include "platform/linux/PortalTriggers.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <set>

namespace quilo {
namespace {

TEST(PortalTriggersTest, TriggersListModifiersThenTheKey)
{
    EXPECT_EQ(portalTriggerForCombination(17, cmdKey + shiftKey), "LOGO+SHIFT+t");
    EXPECT_EQ(portalTriggerForCombination(17, cmdKey + optionKey + shiftKey), "LOGO+ALT+SHIFT+t");
    EXPECT_EQ(portalTriggerForCombination(17, cmdKey + controlKey), "LOGO+CTRL+t");
    EXPECT_EQ(portalTriggerForCombination(122, controlKey + optionKey + shiftKey + cmdKey), "LOGO+ALT+CTRL+SHIFT+F1");
    EXPECT_EQ(portalTriggerForCombination(49, 0), "space");
    EXPECT_EQ(portalTriggerForCombination(17, cmdKey + 0x10000 + 0x00FF), "LOGO+t") << "not modifiers of ours";
    EXPECT_FALSE(portalTriggerForCombination(17, -1));
    EXPECT_FALSE(portalTriggerForCombination(56, shiftKey)) << "a modifier key is no key";
    EXPECT_FALSE(portalTriggerForCombination(66, cmdKey)) << "no key has code 66";
}

// A trigger must name a symbol the keyboard really types: on a US layout, the
// key's own symbol, or for the keypad the digit it types with Num Lock on.
TEST(PortalTriggersTest, EveryNameIsASymbolOfAUsKeyboard)
{
    std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS),
                                                                        &xkb_context_unref);
    ASSERT_TRUE(context);
    const xkb_rule_names us{"evdev", "pc105", "us", "", ""};
    std::unique_ptr<xkb_keymap, decltype(&xkb_keymap_unref)> keymap(
        xkb_keymap_new_from_names(context.get(), &us, XKB_KEYMAP_COMPILE_NO_FLAGS), &xkb_keymap_unref);
    ASSERT_TRUE(keymap) << "is xkb-data installed?";

    struct Levels {
        xkb_keymap* keymap;
        std::set<xkb_keysym_t> symbols[2];
    } levels{keymap.get(), {}};
    xkb_keymap_key_for_each(
        keymap.get(),
        [](xkb_keymap* map, xkb_keycode_t key, void* data) {
            auto& found = *static_cast<Levels*>(data);
            for (xkb_level_index_t level = 0; level < 2; ++level) {
                const xkb_keysym_t* symbols = nullptr;
                const int count = xkb_keymap_key_get_syms_by_level(map, key, 0, level, &symbols);
                found.symbols[level].insert(symbols, symbols + count);
            }
        },
        &levels);

    for (std::int32_t code = 0; code < 128; ++code) {
        const std::optional<QString> name = keySymbolNameForMacKeyCode(code);
        if (!name)
            continue;
        const xkb_keysym_t symbol = xkb_keysym_from_name(name->toLatin1().constData(), XKB_KEYSYM_NO_FLAGS);
        ASSERT_NE(symbol, XKB_KEY_NoSymbol) << code << " " << name->toStdString();
        const bool keypadDigit = name->startsWith("KP_") && levels.symbols[1].count(symbol);
        EXPECT_TRUE(levels.symbols[0].count(symbol) || keypadDigit) << code << " " << name->toStdString();
    }
}

} // namespace
} // namespace quilo
