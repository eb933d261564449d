#include "iconfamily/IcnsRle.h"

#include <gtest/gtest.h>

#include <random>

namespace quilo {
namespace {

struct PackedRun {
    bool repeat;
    std::size_t length;
};

// Splits packed data into its runs, checking the scheme's limits on the way.
std::vector<PackedRun> runsOf(std::span<const std::uint8_t> packed)
{
    std::vector<PackedRun> runs;
    for (std::size_t i = 0; i < packed.size();) {
        const std::uint8_t control = packed[i];
        if (control < 0x80) {
            runs.push_back({false, std::size_t(control) + 1});
            i += 2 + control;
        } else {
            runs.push_back({true, std::size_t(control) - 0x80 + 3});
            i += 2;
        }
        EXPECT_LE(i, packed.size()) << "run past the end";
    }
    return runs;
}

std::vector<std::uint8_t> packOne(const std::vector<std::uint8_t>& channel)
{
    return icnsrle::pack({{channel.data(), channel.size()}}, {}, {});
}

std::vector<std::uint8_t> unpacked(std::span<const std::uint8_t> packed, std::size_t size)
{
    std::vector<std::uint8_t> out(size);
    EXPECT_EQ(icnsrle::unpack(packed, out), packed.size());
    return out;
}

// A row of 256 bytes: a run of `length` equal bytes in the middle of
// alternating ones.
std::vector<std::uint8_t> rowWithRun(std::size_t length)
{
    std::vector<std::uint8_t> row(256);
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = std::uint8_t(i % 2);
    for (std::size_t i = 0; i < length; ++i)
        row[60 + i] = 7;
    return row;
}

TEST(IcnsRle, RoundTripsRunsAtEveryBoundary)
{
    for (std::size_t length : {1, 2, 3, 4, 127, 128, 129, 130, 131, 132, 133, 190}) {
        SCOPED_TRACE(length);
        const auto row = rowWithRun(length);
        const auto packed = packOne(row);
        EXPECT_EQ(unpacked(packed, row.size()), row);
        std::size_t repeated = 0;
        for (const PackedRun& run : runsOf(packed)) {
            EXPECT_LE(run.length, run.repeat ? icnsrle::kMaxRepeat : icnsrle::kMaxLiteral);
            if (run.repeat)
                repeated += run.length;
        }
        // Every run of three or more, however long, goes out as repeats alone.
        EXPECT_EQ(repeated, length >= 3 ? length : 0);
    }
}

TEST(IcnsRle, AllEqualAndAlternatingDataPackToTheirShortestForms)
{
    const std::vector<std::uint8_t> same(1024, 0x5A);
    const auto packedSame = packOne(same);
    EXPECT_EQ(unpacked(packedSame, same.size()), same);
    // 1024 = 7 x 130 + 114: eight repeats, two bytes each.
    EXPECT_EQ(packedSame.size(), 16u);

    std::vector<std::uint8_t> alternating(300);
    for (std::size_t i = 0; i < alternating.size(); ++i)
        alternating[i] = std::uint8_t(i % 2 ? 0xFF : 0x00);
    const auto packedAlternating = packOne(alternating);
    EXPECT_EQ(unpacked(packedAlternating, alternating.size()), alternating);
    // Literal runs of 128, 128 and 44 bytes.
    EXPECT_EQ(packedAlternating.size(), 303u);
}

TEST(IcnsRle, AChannelNeverOpensWithALoneLiteralByte)
{
    std::vector<std::uint8_t> channel(64, 9);
    channel[0] = 1;
    const auto packed = packOne(channel);
    EXPECT_EQ(unpacked(packed, channel.size()), channel);
    const auto runs = runsOf(packed);
    ASSERT_FALSE(runs.empty());
    EXPECT_FALSE(runs[0].repeat);
    EXPECT_GE(runs[0].length, 2u);
}

TEST(IcnsRle, ChannelsArePackedSeparatelyFromInterleavedPixels)
{
    // Two channels of one colour each: a run must not cross from one into the
    // other even though the bytes at the seam are equal.
    std::vector<std::uint8_t> pixels(2 * 100, 4);
    const std::vector<std::uint8_t> packed =
        icnsrle::pack({{pixels.data(), 100, 2}, {pixels.data() + 1, 100, 2}}, {}, {});
    const auto runs = runsOf(packed);
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_EQ(runs[0].length, 100u);
    EXPECT_EQ(runs[1].length, 100u);
}

TEST(IcnsRle, PackedLengthsThatReadersTakeForRawDataAreAvoided)
{
    std::mt19937 random(7);
    std::vector<std::uint8_t> noise(256);
    for (auto& byte : noise)
        byte = std::uint8_t(random());
    const std::uint8_t prefix[4] = {0, 0, 0, 0};
    const std::size_t natural = icnsrle::pack({{noise.data(), noise.size()}}, prefix, {}).size();
    const auto dodged = icnsrle::pack({{noise.data(), noise.size()}}, prefix, {natural, natural + 1});
    EXPECT_NE(dodged.size(), natural);
    EXPECT_NE(dodged.size(), natural + 1);
    EXPECT_EQ(std::vector<std::uint8_t>(dodged.begin(), dodged.begin() + 4), std::vector<std::uint8_t>(4, 0));
    EXPECT_EQ(unpacked(std::span(dodged).subspan(4), noise.size()), noise);

    // With only repeats to work with, one of them becomes a literal.
    const std::vector<std::uint8_t> flat(256, 1);
    const std::size_t flatSize = packOne(flat).size();
    const auto flatDodged = icnsrle::pack({{flat.data(), flat.size()}}, {}, {flatSize});
    EXPECT_NE(flatDodged.size(), flatSize);
    EXPECT_EQ(unpacked(flatDodged, flat.size()), flat);
}

TEST(IcnsRle, UnpackingAcceptsRunsAcrossChannelsAndRejectsShortData)
{
    // One repeat of ten covering the end of one 5-byte channel and the next.
    const std::vector<std::uint8_t> crossing = {0x80 + 7, 3};
    std::vector<std::uint8_t> out(10, 0xEE);
    EXPECT_EQ(icnsrle::unpack(crossing, out), 2u);
    EXPECT_EQ(out, std::vector<std::uint8_t>(10, 3));
    std::vector<std::uint8_t> twelve(12);
    EXPECT_EQ(icnsrle::unpack(crossing, twelve), 0u);

    const std::vector<std::uint8_t> truncatedLiteral = {5, 1, 2};
    std::vector<std::uint8_t> six(6);
    EXPECT_EQ(icnsrle::unpack(truncatedLiteral, six), 0u);
    const std::vector<std::uint8_t> repeatWithoutValue = {0x81};
    EXPECT_EQ(icnsrle::unpack(repeatWithoutValue, six), 0u);
    EXPECT_EQ(icnsrle::unpack({}, six), 0u);
}

TEST(IcnsRle, ChannelsWhoseLastLiteralCountsOneTooManyAreReadChannelByChannel)
{
    // Channel one, 1 2 3 4, under a literal count of five; channel two, four 9s.
    const std::vector<std::uint8_t> overcounted = {4, 1, 2, 3, 4, 0x81, 9};
    std::vector<std::uint8_t> out(8);
    EXPECT_EQ(icnsrle::unpackChannels(overcounted, out, 4), overcounted.size());
    EXPECT_EQ(out, (std::vector<std::uint8_t>{1, 2, 3, 4, 9, 9, 9, 9}));

    // Well-formed data that crosses channels is still read as one stream.
    const std::vector<std::uint8_t> crossing = {0x80 + 5, 7};
    EXPECT_EQ(icnsrle::unpackChannels(crossing, out, 4), 2u);
    EXPECT_EQ(out, std::vector<std::uint8_t>(8, 7));
}

} // namespace
} // namespace quilo
