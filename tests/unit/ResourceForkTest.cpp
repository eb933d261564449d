// The resource fork codec: what it writes reads back the same, edits leave
// the rest alone, and bytes that lie about themselves are refused.
#include "iconfamily/ResourceFork.h"

#include <gtest/gtest.h>

namespace quilo {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr OSType kIcns = fourCharCode("icns");
constexpr OSType kStr = fourCharCode("STR ");
constexpr std::int16_t kCustomIconId = -16455;

std::uint32_t at32(const Bytes& b, std::size_t i) { return readFourCharCode(b.data() + i); }
void set32(Bytes& b, std::size_t i, std::uint32_t v) { writeFourCharCode(b.data() + i, v); }
void set16(Bytes& b, std::size_t i, std::uint16_t v)
{
    b[i] = std::uint8_t(v >> 8);
    b[i + 1] = std::uint8_t(v);
}

ResourceFork sampleFork()
{
    ResourceFork fork;
    fork.mapAttributes = 0x0080;
    fork.systemArea[3] = 0xAB;
    fork.mapFileRef = 0x1234;
    EXPECT_TRUE(fork.add({kStr, 128, "Hello", 0x20, {'h', 'i'}}));
    EXPECT_TRUE(fork.add({kIcns, kCustomIconId, "", 0, Bytes(300, 7)}));
    EXPECT_TRUE(fork.add({fourCharCode("vers"), 1, "", 0x08, {}}));
    EXPECT_TRUE(fork.add({kStr, -1, std::string(255, 'n'), 0, {1, 2, 3}}));
    return fork;
}

Bytes serialised(const ResourceFork& fork)
{
    auto bytes = serialiseResourceFork(fork);
    EXPECT_TRUE(bytes.has_value());
    return bytes.value_or(Bytes{});
}

TEST(ResourceFork, RoundTripsInCanonicalLayout)
{
    const ResourceFork fork = sampleFork();
    // Added beside its type, so the map groups the two 'STR ' resources.
    EXPECT_EQ(fork.resources[1].type, kStr);
    const Bytes bytes = serialised(fork);
    EXPECT_EQ(at32(bytes, 0), kResourceDataStart);
    EXPECT_EQ(at32(bytes, 4), kResourceDataStart + at32(bytes, 8));
    EXPECT_EQ(at32(bytes, 4) + at32(bytes, 12), bytes.size());
    EXPECT_EQ(parseResourceFork(bytes), fork);

    // The custom icon's ID as the Resource Manager stores it: icns is the
    // second type, its single reference follows the three 'STR ' and 'vers'.
    const std::size_t map = at32(bytes, 4);
    const std::size_t typeList = map + 28;
    EXPECT_EQ(at32(bytes, typeList + 2 + 8), kIcns);
    const std::size_t refList = typeList + (std::size_t(bytes[typeList + 2 + 8 + 6]) << 8 | bytes[typeList + 2 + 8 + 7]);
    EXPECT_EQ(bytes[refList], 0xBF);
    EXPECT_EQ(bytes[refList + 1], 0xB9);

    const Bytes empty = serialised(ResourceFork{});
    EXPECT_EQ(empty.size(), kEmptyResourceForkSize);
    const auto reread = parseResourceFork(empty);
    ASSERT_TRUE(reread);
    EXPECT_TRUE(reread->resources.empty());
}

TEST(ResourceFork, EditsKeepOneIconAndEverythingElse)
{
    ResourceFork fork = sampleFork();
    const Resource newIcon{kIcns, kCustomIconId, "", 0, Bytes(10, 9)};
    EXPECT_FALSE(fork.add(newIcon)) << "a taken ID must not be added twice";
    EXPECT_FALSE(fork.add({kStr, 5, std::string(256, 'x'), 0, {}}));
    EXPECT_TRUE(fork.remove(kIcns, kCustomIconId));
    EXPECT_FALSE(fork.remove(kIcns, kCustomIconId));
    EXPECT_TRUE(fork.add(newIcon));

    const auto reread = parseResourceFork(serialised(fork));
    ASSERT_TRUE(reread);
    EXPECT_EQ(std::count_if(reread->resources.begin(), reread->resources.end(),
                            [](const Resource& r) { return r.type == kIcns; }),
              1);
    ASSERT_TRUE(reread->find(kIcns, kCustomIconId));
    EXPECT_EQ(reread->find(kIcns, kCustomIconId)->data, newIcon.data);
    ResourceFork expected = sampleFork();
    expected.remove(kIcns, kCustomIconId);
    ResourceFork others = *reread;
    others.remove(kIcns, kCustomIconId);
    EXPECT_EQ(others, expected) << "names, attributes, order and map attributes survive";
}

TEST(ResourceFork, RefusesForksThatLie)
{
    const Bytes good = serialised(sampleFork());
    ASSERT_TRUE(parseResourceFork(good));
    for (std::size_t cut = 0; cut < good.size(); ++cut)
        EXPECT_FALSE(parseResourceFork({good.data(), cut})) << "cut at " << cut;

    const std::size_t map = at32(good, 4);
    const std::size_t typeList = map + 28;
    const std::size_t refList = typeList + 2 + 3 * 8;
    auto refused = [&](auto&& edit) {
        Bytes bytes = good;
        edit(bytes);
        return !parseResourceFork(bytes);
    };
    EXPECT_TRUE(refused([&](Bytes& b) { set32(b, 8, 0x80000000); })) << "2 GB data length";
    EXPECT_TRUE(refused([&](Bytes& b) { set32(b, 12, 0xFFFFFFFF); })) << "map length past the end";
    EXPECT_TRUE(refused([&](Bytes& b) { set32(b, 4, 200); })) << "map inside the data";
    EXPECT_TRUE(refused([&](Bytes& b) { set16(b, typeList, 200); })) << "more types than the map holds";
    EXPECT_TRUE(refused([&](Bytes& b) { set16(b, typeList + 2 + 4, 3000); })) << "more references than the map holds";
    EXPECT_TRUE(refused([&](Bytes& b) { set16(b, map + 24, 0xFFF0); })) << "type list past the map";
    EXPECT_TRUE(refused([&](Bytes& b) { set16(b, refList + 2, 0x7000); })) << "name past the map";
    EXPECT_TRUE(refused([&](Bytes& b) { b[refList + 12 + 5] = b[refList + 5]; b[refList + 12 + 6] = b[refList + 6];
                                        b[refList + 12 + 7] = b[refList + 7]; })) << "two resources on one block";
    EXPECT_TRUE(refused([&](Bytes& b) { b[refList + 5] = 0xFF; })) << "data offset past the data";
    EXPECT_TRUE(refused([&](Bytes& b) { set32(b, 256, 0x7FFFFFFF); })) << "block length past the data";
    EXPECT_TRUE(refused([&](Bytes& b) { set16(b, refList + 12, 128); })) << "the same ID twice";
    EXPECT_TRUE(refused([&](Bytes& b) { set32(b, typeList + 2 + 8, kStr); })) << "the same type twice";
    EXPECT_TRUE(refused([&](Bytes& b) { set16(b, typeList + 2 + 8 + 6, 2 + 3 * 8); })) << "reference lists overlap";
}

} // namespace
} // namespace quilo
