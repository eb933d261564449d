// Key combinations: validity, equality, how people see them, and how the
// preferences keep them.
#include "HotKeysLib/GlobalHotKeyRule.h"
#include "HotKeysLib/KeyCombo.h"
#include "HotKeysLib/KeyComboAdditions.h"
#include "foundation/UserDefaults.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

const QString kCommand = QString(QChar(0x2318));
const QString kOption = QString(QChar(0x2325));
const QString kShift = QString(QChar(0x21E7));

class KeyComboTest : public ::testing::Test {
protected:
    ~KeyComboTest() override { KeyCombo::setKeyCodesResource(":/KeyCodes.plist"); }
};

TEST_F(KeyComboTest, ClearedCombinationIsInvalidAndShowsNone)
{
    for (const KeyCombo& cleared : {KeyCombo(), KeyCombo::keyCombo(), KeyCombo::clearKeyCombo()}) {
        EXPECT_EQ(cleared.keyCode(), -1);
        EXPECT_EQ(cleared.modifiers(), -1);
        EXPECT_FALSE(cleared.isValid());
        EXPECT_EQ(cleared.userDisplayRep(), "(None)");
    }
    EXPECT_FALSE(KeyCombo(17, -1).isValid());
    EXPECT_FALSE(KeyCombo(-1, cmdKey).isValid());
    EXPECT_TRUE(KeyCombo(0, 0).isValid());
}

TEST_F(KeyComboTest, EqualityLooksAtTheLowSixteenBitsOfTheModifiers)
{
    EXPECT_TRUE(KeyCombo(17, 0x10100).isEqual(KeyCombo(17, 0x0100)));
    EXPECT_FALSE(KeyCombo(17, 0x0300) == KeyCombo(17, 0x0200));
    EXPECT_FALSE(KeyCombo(17, cmdKey) == KeyCombo(16, cmdKey));
}

TEST_F(KeyComboTest, DisplayIsGlyphsInCommandOptionControlShiftOrderThenTheKey)
{
    EXPECT_EQ(KeyCombo::stringForModifiers(cmdKey + shiftKey), kCommand + kShift + " ");
    EXPECT_EQ(KeyCombo::stringForModifiers(cmdKey + optionKey + shiftKey), kCommand + kOption + kShift + " ");
    EXPECT_EQ(KeyCombo::stringForModifiers(shiftKey + controlKey + cmdKey), kCommand + "^" + kShift + " ");
    EXPECT_EQ(KeyCombo::stringForModifiers(0x00FF), "") << "other bits are not modifiers";

    EXPECT_EQ(KeyCombo(17, cmdKey + shiftKey).userDisplayRep(), kCommand + kShift + " T");
    EXPECT_EQ(KeyCombo(0, 0).userDisplayRep(), "A") << "no blank before a bare key";
    EXPECT_EQ(KeyCombo(49, controlKey).description(), "^ Space");
    EXPECT_EQ(KeyCombo::stringForKeyCode(122), "F1");
    for (auto [code, name] : {std::pair{51, "Backspace"}, {117, "Delete"}, {114, "Insert"}, {71, "Num Lock"}})
        EXPECT_EQ(KeyCombo::stringForKeyCode(std::int16_t(code)), name) << "as a PC keyboard labels it";
    EXPECT_EQ(KeyCombo::stringForKeyCode(300), "12C") << "a code the list does not name";
}

// Only a combination with Super, Alt or Control, or a function key, may be
// taken from every program of the session.
TEST_F(KeyComboTest, AGlobalHotKeyNeedsAModifierUnlessItIsAFunctionKey)
{
    const struct {
        std::int32_t keyCode, modifiers;
        bool may;
    } combos[] = {{17, cmdKey, true},   {17, optionKey, true}, {17, controlKey + shiftKey, true},
                  {17, shiftKey, false}, {36, 0, false},       {53, 0, false},
                  {122, 0, true},        {80, shiftKey, true},  {90, 0, false}, // F1, F19, F20
                  {-1, cmdKey, false},   {17, -1, false}};
    for (const auto& combo : combos)
        EXPECT_EQ(mayBeGlobalHotKey(combo.keyCode, combo.modifiers), combo.may)
            << combo.keyCode << " " << combo.modifiers;
}

TEST_F(KeyComboTest, WithoutTheListKeysShowAsHexadecimal)
{
    KeyCombo::setKeyCodesResource("/nonexistent/KeyCodes.plist");
    EXPECT_EQ(KeyCombo::keyCodesDictionary(), nullptr);
    EXPECT_EQ(KeyCombo(50, 0).userDisplayRep(), "32");
    EXPECT_EQ(KeyCombo(50, controlKey).userDisplayRep(), "^ 32");
    EXPECT_EQ(KeyCombo(122, 0).userDisplayRep(), "7A");
}

TEST_F(KeyComboTest, ArchivesRoundTripThroughTheDefaults)
{
    test::TemporaryDirectory folder;
    UserDefaults defaults(QString::fromStdString((folder / "defaults.conf").string()));
    for (const KeyCombo& combo : {KeyCombo(17, cmdKey + shiftKey), KeyCombo(-1, -1), KeyCombo(32767, 0x7FFFFFFF),
                                  KeyCombo(0, 0x10100)}) {
        setKeyCombo(defaults, &combo, "combo");
        const KeyCombo back = keyComboForKey(defaults, "combo");
        EXPECT_EQ(back.keyCode(), combo.keyCode());
        EXPECT_EQ(back.modifiers(), combo.modifiers()) << "all 32 bits, not just the compared ones";
    }
    setKeyCombo(defaults, nullptr, "combo");
    EXPECT_FALSE(defaults.objectForKey("combo").isValid());
    EXPECT_FALSE(keyComboForKey(defaults, "combo").isValid());
    defaults.setObject(QByteArray("not an archive"), "combo");
    EXPECT_EQ(keyComboForKey(defaults, "combo").keyCode(), -1);
}

} // namespace
} // namespace quilo
