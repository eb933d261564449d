// The AppleDouble codec: new sidecars as macOS lays them out, rewrites that
// keep what they do not change, and hostile sidecars refused. (Peers read
// what the commands write in the interop tests.)
#include "iconfamily/AppleDouble.h"
#include "iconfamily/ResourceFork.h"
#include "tests/support/AttributeArea.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace quilo {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint32_t at32(const Bytes& b, std::size_t i) { return readFourCharCode(b.data() + i); }
void set32(Bytes& b, std::size_t i, std::uint32_t v) { writeFourCharCode(b.data() + i, v); }

Bytes forkWithIcon()
{
    ResourceFork fork;
    fork.add({fourCharCode("icns"), -16455, "", 0, Bytes{'i', 'c', 'n', 's', 0, 0, 0, 8}});
    return serialiseResourceFork(fork).value();
}

FinderInfo customIconInfo()
{
    FinderInfo info;
    info.setFileType(fourCharCode("JPEG"));
    info.setCreator(fourCharCode("8BIM"));
    info.setFinderFlags(0x0400);
    info.bytes[20] = 0x5A; // in the extended half
    return info;
}

Bytes newSidecar()
{
    AppleDouble sidecar;
    sidecar.setFinderInfo(customIconInfo());
    sidecar.setResourceFork(forkWithIcon());
    return sidecar.serialise().value();
}

TEST(AppleDouble, NewSidecarIsLaidOutAsMacOsDoes)
{
    const Bytes bytes = newSidecar();
    EXPECT_EQ(at32(bytes, 0), 0x00051607u);
    EXPECT_EQ(at32(bytes, 4), 0x00020000u);
    EXPECT_EQ(std::string(bytes.begin() + 8, bytes.begin() + 24), "Mac OS X        ");
    EXPECT_EQ(bytes[24] << 8 | bytes[25], 2);
    EXPECT_EQ(at32(bytes, 26), 9u);
    EXPECT_EQ(at32(bytes, 30), 50u);
    EXPECT_EQ(at32(bytes, 34), 3760u);
    EXPECT_EQ(at32(bytes, 38), 2u);
    EXPECT_EQ(at32(bytes, 42), 3810u);
    EXPECT_EQ(at32(bytes, 46), forkWithIcon().size());
    EXPECT_EQ(bytes.size(), 3810 + forkWithIcon().size());
    EXPECT_EQ(at32(bytes, 50 + 8), 0x04000000u) << "flags after type and creator";
    // The empty extended-attribute area: header at 84, data starting and
    // ending at 120, everything up to the fork inside it.
    EXPECT_EQ(at32(bytes, 84), fourCharCode("ATTR"));
    EXPECT_EQ(at32(bytes, 92), 3810u);
    EXPECT_EQ(at32(bytes, 96), 120u);
    EXPECT_EQ(at32(bytes, 100), 0u);
    EXPECT_EQ(bytes[118] << 8 | bytes[119], 0) << "no attributes";

    EXPECT_EQ(AppleDouble().serialise()->size(), 3810u) << "no fork: an empty fork entry";
}

TEST(AppleDouble, RewriteChangesOnlyFinderInfoAndFork)
{
    // Entries in no particular order, an attribute area with content, a gap.
    Bytes original(26 + 4 * 12);
    set32(original, 0, 0x00051607);
    set32(original, 4, 0x00020000);
    original[25] = 4;
    auto addEntry = [&](std::size_t slot, std::uint32_t id, const Bytes& data, std::size_t gap) {
        const std::size_t offset = original.size() + gap;
        set32(original, 26 + slot * 12, id);
        set32(original, 30 + slot * 12, std::uint32_t(offset));
        set32(original, 34 + slot * 12, std::uint32_t(data.size()));
        original.resize(offset);
        original.insert(original.end(), data.begin(), data.end());
    };
    Bytes finderInfo(200, 0x33);
    addEntry(2, 9, finderInfo, 0);
    addEntry(0, 4, {'c', 'o', 'm', 'm', 'e', 'n', 't'}, 3);
    addEntry(3, 2, Bytes(40, 0x44), 0);
    addEntry(1, 8, Bytes(16, 0x88), 0);

    auto sidecar = AppleDouble::parse(original);
    ASSERT_TRUE(sidecar);
    EXPECT_EQ(sidecar->filler(), (std::array<std::uint8_t, 16>{}));
    EXPECT_EQ(sidecar->finderInfo().finderFlags(), 0x3333);
    EXPECT_EQ(sidecar->resourceFork()->size(), 40u);
    EXPECT_EQ(AppleDouble::parse(*sidecar->serialise()), sidecar);
    EXPECT_EQ(*sidecar->serialise(), original) << "unchanged, it is written back byte for byte";

    sidecar->setFinderInfo(customIconInfo());
    sidecar->setResourceFork(forkWithIcon());
    const Bytes rewritten = *sidecar->serialise();
    const auto reread = AppleDouble::parse(rewritten);
    ASSERT_TRUE(reread);
    EXPECT_EQ(reread->finderInfo(), customIconInfo());
    EXPECT_TRUE(std::equal(reread->entry(9)->data.begin() + 32, reread->entry(9)->data.end(), finderInfo.begin() + 32,
                           finderInfo.end()));
    EXPECT_EQ(reread->entry(9)->offset, sidecar->entry(9)->offset) << "the attribute area's offsets stay valid";
    for (std::uint32_t id : {4u, 8u})
        EXPECT_EQ(*reread->entry(id), *AppleDouble::parse(original)->entry(id));
    const auto fork = reread->resourceFork();
    EXPECT_EQ(Bytes(fork->begin(), fork->end()), forkWithIcon());
}

TEST(AppleDouble, AttributesStayFoundWhenTheFinderInfoHasToMove)
{
    // Finder info right after a one-entry header: a fork's descriptor pushes
    // it 12 bytes on, and the attribute area's offsets must follow it.
    Bytes original(26 + 12);
    set32(original, 0, 0x00051607);
    set32(original, 4, 0x00020000);
    original[25] = 1;
    set32(original, 26, 9);
    set32(original, 30, 38);
    set32(original, 34, 3760);
    const Bytes entry = test::finderInfoWithAttribute(38, "com.example.note", "kept");
    original.insert(original.end(), entry.begin(), entry.end());
    ASSERT_EQ(test::firstAttributeValue(original), "kept");

    auto sidecar = AppleDouble::parse(original);
    ASSERT_TRUE(sidecar);
    sidecar->setResourceFork(forkWithIcon());
    const Bytes rewritten = sidecar->serialise().value();
    EXPECT_EQ(at32(rewritten, 30), 50u) << "the Finder info moved";
    EXPECT_EQ(test::firstAttributeValue(rewritten), "kept");
    EXPECT_EQ(at32(rewritten, 50 + 34 + 8), 50u + 3760u) << "the area's total size moved too";
    EXPECT_FALSE(sidecar->holdsNothing()) << "an attribute is something";
}

TEST(AppleDouble, RefusesSidecarsThatLie)
{
    const Bytes good = newSidecar();
    for (std::size_t cut = 0; cut < good.size(); ++cut)
        EXPECT_FALSE(AppleDouble::parse({good.data(), cut})) << "cut at " << cut;
    auto refused = [&](auto&& edit) {
        Bytes bytes = good;
        edit(bytes);
        return !AppleDouble::parse(bytes);
    };
    EXPECT_TRUE(refused([](Bytes& b) { set32(b, 0, 0x00051600); })) << "AppleSingle";
    EXPECT_TRUE(refused([](Bytes& b) { set32(b, 4, 0x00010000); })) << "version 1";
    EXPECT_TRUE(refused([](Bytes& b) { b[25] = 0xFF; })) << "more entries than bytes";
    EXPECT_TRUE(refused([](Bytes& b) { b[25] = 3; })) << "a third descriptor that is Finder info bytes";
    EXPECT_TRUE(refused([](Bytes& b) { set32(b, 46, 0x80000000); })) << "2 GB fork";
    EXPECT_TRUE(refused([](Bytes& b) { set32(b, 42, 0xFFFFFFF0); })) << "fork past the end";
    EXPECT_TRUE(refused([](Bytes& b) { set32(b, 42, 3000); })) << "fork over the Finder info";
    EXPECT_TRUE(refused([](Bytes& b) { set32(b, 30, 20); })) << "Finder info over the header";
    EXPECT_TRUE(refused([](Bytes& b) { set32(b, 38, 9); })) << "Finder info twice";
}

} // namespace
} // namespace quilo
