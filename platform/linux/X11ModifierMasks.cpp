#include "platform/linux/X11ModifierMasks.h"

#include "HotKeysLib/KeyCombo.h"

#include <X11/keysym.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace quilo {
namespace {

template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

// Every keysym of each keycode, indexed from the server's first keycode.
struct KeyboardMapping {
    xcb_keycode_t firstKeycode = 0;
    int keysymsPerKeycode = 0;
    std::vector<xcb_keysym_t> keysyms;

    bool keycodeHas(xcb_keycode_t keycode, xcb_keysym_t wanted) const
    {
        if (keycode < firstKeycode || keysymsPerKeycode == 0)
            return false;
        const std::size_t start = std::size_t(keycode - firstKeycode) * std::size_t(keysymsPerKeycode);
        for (std::size_t index = start; index < start + std::size_t(keysymsPerKeycode) && index < keysyms.size();
             ++index)
            if (keysyms[index] == wanted)
                return true;
        return false;
    }
};

KeyboardMapping readKeyboardMapping(xcb_connection_t* connection)
{
    const xcb_setup_t* setup = xcb_get_setup(connection);
    KeyboardMapping mapping;
    mapping.firstKeycode = setup->min_keycode;
    const auto count = std::uint8_t(setup->max_keycode - setup->min_keycode + 1);
    ReplyPointer<xcb_get_keyboard_mapping_reply_t> reply(
        xcb_get_keyboard_mapping_reply(connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count),
                                       nullptr),
        &std::free);
    if (!reply)
        return mapping;
    mapping.keysymsPerKeycode = reply->keysyms_per_keycode;
    const xcb_keysym_t* keysyms = xcb_get_keyboard_mapping_keysyms(reply.get());
    mapping.keysyms.assign(keysyms, keysyms + xcb_get_keyboard_mapping_keysyms_length(reply.get()));
    return mapping;
}

} // namespace

std::optional<std::uint16_t> X11ModifierMasks::maskForCarbonModifiers(std::int32_t carbonModifiers) const
{
    std::uint16_t mask = 0;
    if (carbonModifiers & shiftKey)
        mask |= XCB_MOD_MASK_SHIFT;
    if (carbonModifiers & controlKey)
        mask |= XCB_MOD_MASK_CONTROL;
    if (carbonModifiers & cmdKey) {
        if (!super)
            return std::nullopt;
        mask |= super;
    }
    if (carbonModifiers & optionKey) {
        if (!alt)
            return std::nullopt;
        mask |= alt;
    }
    return mask;
}

std::uint16_t X11ModifierMasks::significant() const
{
    return std::uint16_t(XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | super | alt);
}

X11ModifierMasks readModifierMasks(xcb_connection_t* connection)
{
    ReplyPointer<xcb_get_modifier_mapping_reply_t> modifiers(
        xcb_get_modifier_mapping_reply(connection, xcb_get_modifier_mapping(connection), nullptr), &std::free);
    if (!modifiers)
        return {};
    const KeyboardMapping keyboard = readKeyboardMapping(connection);
    const xcb_keycode_t* keycodes = xcb_get_modifier_mapping_keycodes(modifiers.get());
    const int perModifier = modifiers->keycodes_per_modifier;

    X11ModifierMasks masks;
    // Mod1 to Mod5 only: Shift, Lock and Control are fixed by the protocol.
    for (int modifier = 3; modifier < 8; ++modifier) {
        const auto bit = std::uint16_t(1u << modifier);
        for (int slot = 0; slot < perModifier; ++slot) {
            const xcb_keycode_t keycode = keycodes[modifier * perModifier + slot];
            if (keycode == 0)
                continue;
            if (!masks.super && (keyboard.keycodeHas(keycode, XK_Super_L) || keyboard.keycodeHas(keycode, XK_Super_R)))
                masks.super = bit;
            if (!masks.alt && (keyboard.keycodeHas(keycode, XK_Alt_L) || keyboard.keycodeHas(keycode, XK_Alt_R)))
                masks.alt = bit;
            if (!masks.numLock && keyboard.keycodeHas(keycode, XK_Num_Lock))
                masks.numLock = bit;
        }
    }
    return masks;
}

} // namespace quilo
