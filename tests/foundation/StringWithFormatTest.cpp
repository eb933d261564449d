// Texts of the string tables filled with objects, as the alerts use them.
#include "foundation/StringWithFormat.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

TEST(StringWithFormat, FillsEachPlaceholderInOrder)
{
    EXPECT_EQ(stringWithFormat("%@ %@ is available.", {"Quilo", "1.2"}), "Quilo 1.2 is available.");
    EXPECT_EQ(stringWithFormat("%@%@", {"a", "b"}), "ab");
    EXPECT_EQ(stringWithFormat("no placeholders", {"unused"}), "no placeholders");
    // An object's own "%@" is text, not another placeholder.
    EXPECT_EQ(stringWithFormat("%@ and %@", {"%@", "x"}), "%@ and x");
    EXPECT_EQ(stringWithFormat("100%% of %@", {"it"}), "100% of it");
    EXPECT_EQ(stringWithFormat("50% off, %d", {"x"}), "50% off, %d");
    EXPECT_EQ(stringWithFormat("ends in %", {}), "ends in %");
}

TEST(StringWithFormat, WrongCountsStillRead)
{
    EXPECT_EQ(stringWithFormat("%@ version %@", {"Quilo"}), "Quilo version ");
    EXPECT_EQ(stringWithFormat("%@ is up to date", {"Quilo", "1.1"}), "Quilo is up to date");
    EXPECT_EQ(stringWithFormat("", {"x"}), "");
}

} // namespace
} // namespace quilo
