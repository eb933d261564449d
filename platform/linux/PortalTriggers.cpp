#include "platform/linux/PortalTriggers.h"

#include "HotKeysLib/KeyCombo.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace quilo {
namespace {

struct KeySymbolName {
    std::int32_t macKeyCode;
    const char* name;
};

// By position: code 114 is Help on a Mac keyboard and Insert on a PC's, and
// the PC's key is what the compositor sees. Left out: Clear (71), which sits
// where Num Lock does, and F13 to F20, which Linux keymaps give vendor symbols
// (F13 types XF86Tools) that differ from one keymap to the next.
constexpr KeySymbolName kKeySymbolNames[] = {
    {0, "a"}, {1, "s"}, {2, "d"}, {3, "f"}, {4, "h"}, {5, "g"}, {6, "z"}, {7, "x"}, {8, "c"}, {9, "v"}, {11, "b"},
    {12, "q"}, {13, "w"}, {14, "e"}, {15, "r"}, {16, "y"}, {17, "t"}, {18, "1"}, {19, "2"}, {20, "3"}, {21, "4"},
    {22, "6"}, {23, "5"}, {24, "equal"}, {25, "9"}, {26, "7"}, {27, "minus"}, {28, "8"}, {29, "0"},
    {30, "bracketright"}, {31, "o"}, {32, "u"}, {33, "bracketleft"}, {34, "i"}, {35, "p"}, {36, "Return"}, {37, "l"},
    {38, "j"}, {39, "apostrophe"}, {40, "k"}, {41, "semicolon"}, {42, "backslash"}, {43, "comma"}, {44, "slash"},
    {45, "n"}, {46, "m"}, {47, "period"}, {48, "Tab"}, {49, "space"}, {50, "grave"}, {51, "BackSpace"},
    {53, "Escape"}, {65, "KP_Decimal"}, {67, "KP_Multiply"}, {69, "KP_Add"}, {72, "XF86AudioRaiseVolume"},
    {73, "XF86AudioLowerVolume"}, {74, "XF86AudioMute"}, {75, "KP_Divide"}, {76, "KP_Enter"}, {78, "KP_Subtract"},
    {81, "KP_Equal"}, {82, "KP_0"}, {83, "KP_1"}, {84, "KP_2"}, {85, "KP_3"}, {86, "KP_4"}, {87, "KP_5"},
    {88, "KP_6"}, {89, "KP_7"}, {91, "KP_8"}, {92, "KP_9"}, {96, "F5"}, {97, "F6"}, {98, "F7"}, {99, "F3"},
    {100, "F8"}, {101, "F9"}, {103, "F11"}, {109, "F10"}, {110, "Menu"}, {111, "F12"}, {114, "Insert"}, {115, "Home"},
    {116, "Prior"}, {117, "Delete"}, {118, "F4"}, {119, "End"}, {120, "F2"}, {121, "Next"}, {122, "F1"},
    {123, "Left"}, {124, "Right"}, {125, "Down"}, {126, "Up"},
};

struct TriggerModifier {
    std::int32_t mask;
    const char* name;
};

constexpr std::array<TriggerModifier, 4> kTriggerModifiers{{
    {cmdKey, "LOGO"},
    {optionKey, "ALT"},
    {controlKey, "CTRL"},
    {shiftKey, "SHIFT"},
}};

} // namespace

std::optional<QString> keySymbolNameForMacKeyCode(std::int32_t macKeyCode)
{
    const auto* row = std::find_if(std::begin(kKeySymbolNames), std::end(kKeySymbolNames),
                                   [macKeyCode](const KeySymbolName& entry) { return entry.macKeyCode == macKeyCode; });
    if (row == std::end(kKeySymbolNames))
        return std::nullopt;
    return QString::fromLatin1(row->name);
}

std::optional<QString> portalTriggerForCombination(std::int32_t keyCode, std::int32_t modifiers)
{
    const std::optional<QString> key = keySymbolNameForMacKeyCode(keyCode);
    if (!key || modifiers < 0)
        return std::nullopt;
    QString trigger;
    for (const TriggerModifier& modifier : kTriggerModifiers)
        if (modifiers & modifier.mask)
            trigger += QLatin1String(modifier.name) + '+';
    return trigger + *key;
}

} // namespace quilo
