#include "iconfamily/JpegBitReader.h"
#include "iconfamily/Orientation.h"
#include "iconfamily/PictureLoader.h"
#include "iconfamily/ProgressiveDcDecoder.h"
#include "tests/support/Files.h"
#include "tests/support/JpegFiles.h"
#include "tests/support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <numeric>

namespace quilo {
namespace {

TEST(JpegBitReader, DecodesCodesOfEveryLengthThroughStuffingUpToTheMarker)
{
    // One code of each length: symbol k is k ones and a zero.
    std::array<std::uint8_t, 16> counts;
    counts.fill(1);
    std::array<std::uint8_t, 16> symbols;
    std::iota(symbols.begin(), symbols.end(), std::uint8_t(0));
    const auto table = jpeg::HuffmanTable::build(counts, symbols);
    ASSERT_TRUE(table);
    // Symbols 15, 0, 8, 9 and 3, the bits 101, five padding ones; the first
    // byte is 0xFF, stuffed.
    const std::uint8_t data[] = {0xFF, 0x00, 0xFE, 0x7F, 0xBF, 0xEE, 0xBF, 0xFF, 0xD9};
    jpeg::ByteSource source(data);
    jpeg::BitReader bits(source);
    for (int symbol : {15, 0, 8, 9, 3})
        EXPECT_EQ(bits.decode(*table), symbol);
    EXPECT_EQ(bits.bits(3), 5);
    EXPECT_EQ(bits.bits(5), 31);
    EXPECT_FALSE(bits.overran());
    EXPECT_EQ(bits.bits(1), 0);
    EXPECT_TRUE(bits.overran());
    EXPECT_EQ(bits.takeMarker(), 0xD9);
}

TEST(JpegBitReader, RefusesHuffmanCountsNoCodeCanHave)
{
    auto build = [](std::initializer_list<std::uint8_t> lengths, std::size_t symbols) {
        std::array<std::uint8_t, 16> counts{};
        std::copy(lengths.begin(), lengths.end(), counts.begin());
        return jpeg::HuffmanTable::build(counts, std::vector<std::uint8_t>(symbols)).has_value();
    };
    EXPECT_TRUE(build({1, 1}, 2));
    EXPECT_TRUE(build({0, 3}, 3));
    EXPECT_FALSE(build({3}, 3));    // three codes of one bit
    EXPECT_FALSE(build({2}, 2));    // "1" would be all ones
    EXPECT_FALSE(build({1, 2}, 3)); // so would "11"
    EXPECT_FALSE(build({1, 1}, 3)); // symbols the counts do not cover
    EXPECT_FALSE(build({0, 0, 0, 0, 0, 0, 0, 255, 2}, 257));
}

using Outcome = DcDecodeResult::Outcome;
using test::JpegLayout;

// A scan script entry: components, first and last coefficient, the bit
// position before and after.
jpeg_scan_info scan(std::initializer_list<int> components, int first, int last, int high, int low)
{
    jpeg_scan_info info{};
    info.comps_in_scan = int(components.size());
    std::copy(components.begin(), components.end(), info.component_index);
    info.Ss = first;
    info.Se = last;
    info.Ah = high;
    info.Al = low;
    return info;
}

// The DC exact in one interleaved scan, the detail after it.
const std::vector<jpeg_scan_info> kDcAtOnce = {scan({0, 1, 2}, 0, 0, 0, 0), scan({0}, 1, 63, 0, 0),
                                               scan({1}, 1, 63, 0, 0), scan({2}, 1, 63, 0, 0)};
// The DC in three steps: first scans of one component each (no MCU
// padding), an interleaved refinement of two, single ones, detail between.
const std::vector<jpeg_scan_info> kDcInSteps = {
    scan({0}, 0, 0, 0, 2),    scan({1}, 0, 0, 0, 2), scan({2}, 0, 0, 0, 0), scan({0}, 1, 63, 0, 0),
    scan({0, 1}, 0, 0, 2, 1), scan({0}, 0, 0, 1, 0), scan({1}, 0, 0, 1, 0), scan({1}, 1, 63, 0, 0),
    scan({2}, 1, 63, 0, 0)};

int largestDifference(const BitmapImageRep& ours, const test::RgbaPicture& theirs)
{
    if (ours.pixelsWide() != theirs.wide || ours.pixelsHigh() != theirs.high)
        return 256;
    int largest = 0;
    for (std::size_t i = 0; i < theirs.pixels.size(); ++i)
        largest = std::max(largest, std::abs(int(ours.bytes()[i]) - int(theirs.pixels[i])));
    return largest;
}

// Decodes `jpeg` and compares it with libjpeg's eighth of its DC alone.
void expectAsLibjpeg(const std::vector<std::uint8_t>& jpeg)
{
    const DcDecodeResult result = decodeProgressiveDc(jpeg, 0);
    ASSERT_EQ(result.outcome, Outcome::Decoded) << result.error;
    EXPECT_EQ(largestDifference(*result.rep, test::libjpegEighth(test::withoutDetail(jpeg))), 0);
}

std::string describe(const JpegLayout& layout)
{
    std::string text = std::to_string(layout.width) + "x" + std::to_string(layout.height) + " sampled";
    for (auto [h, v] : layout.sampling)
        text += " " + std::to_string(h) + "x" + std::to_string(v);
    return text + ", restart " + std::to_string(layout.restartInterval);
}

TEST(ProgressiveDcDecoder, MatchesLibjpegForEverySamplingAndSize)
{
    const std::vector<std::vector<std::pair<int, int>>> samplings = {
        {{1, 1}},                         // grey
        {{1, 1}, {1, 1}, {1, 1}},         // 4:4:4
        {{2, 1}, {1, 1}, {1, 1}},         // 4:2:2
        {{2, 2}, {1, 1}, {1, 1}},         // 4:2:0
        {{1, 2}, {1, 1}, {1, 1}},         // 4:4:0
        {{4, 1}, {1, 1}, {1, 1}},         // 4:1:1
        {{4, 2}, {1, 1}, {1, 1}},         // the most blocks an MCU may hold
        {{2, 2}, {2, 1}, {1, 2}},         // each chroma its own way
        {{1, 1}, {2, 2}, {1, 1}},         // a chroma finer than the luma
    };
    for (const auto& sampling : samplings)
        for (auto [width, height] : {std::pair{1, 1}, {17, 9}, {9, 17}, {70, 33}}) {
            const JpegLayout layout{width, height, sampling};
            SCOPED_TRACE(describe(layout));
            expectAsLibjpeg(test::writeJpeg(layout));
        }
    // Some cameras number their components from 0.
    JpegLayout fromZero{17, 9};
    fromZero.firstComponentId = 0;
    expectAsLibjpeg(test::writeJpeg(fromZero));
}

TEST(ProgressiveDcDecoder, ReadsEveryOrderOfDcScansAndRestartInterval)
{
    for (const auto* scans : {&kDcAtOnce, &kDcInSteps})
        for (const auto& sampling : {std::vector<std::pair<int, int>>{{2, 2}, {1, 1}, {1, 1}}, {{1, 1}, {1, 1}, {1, 1}}})
            for (unsigned restartInterval : {0u, 1u, 2u, 7u}) {
                JpegLayout layout{45, 29, sampling};
                layout.scans = *scans;
                layout.restartInterval = restartInterval;
                SCOPED_TRACE(describe(layout) + (scans == &kDcAtOnce ? ", DC at once" : ", DC in steps"));
                expectAsLibjpeg(test::writeJpeg(layout));
            }
    // Grey scans are never interleaved: restarts count blocks.
    JpegLayout grey{45, 29, {{1, 1}}};
    grey.restartInterval = 3;
    grey.scans = {scan({0}, 0, 0, 0, 1), scan({0}, 1, 63, 0, 0), scan({0}, 0, 0, 1, 0)};
    expectAsLibjpeg(test::writeJpeg(grey));
}

TEST(ProgressiveDcDecoder, ReadsALargeFileInChunksAsFromMemory)
{
    const auto jpeg = test::writeJpeg({2401, 1601});
    expectAsLibjpeg(jpeg);
    test::TemporaryDirectory directory;
    test::writeFileBytes(directory / "large.jpg", jpeg);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen((directory / "large.jpg").c_str(), "rb"), &std::fclose);
    const DcDecodeResult fromFile = decodeProgressiveDc(file.get(), 256);
    ASSERT_EQ(fromFile.outcome, Outcome::Decoded) << fromFile.error;
    EXPECT_EQ(fromFile.pixelsWide, 2401);
    EXPECT_EQ(fromFile.pixelsHigh, 1601);
    EXPECT_TRUE(std::ranges::equal(fromFile.rep->bytes(), decodeProgressiveDc(jpeg, 0).rep->bytes()));
    // Only as far as the DC goes: nowhere near the whole file.
    EXPECT_LT(std::ftell(file.get()), long(test::endOfDcScans(jpeg)) + 64 * 1024);
}

TEST(ProgressiveDcDecoder, FailsOnAFileCutAnywhereBeforeItsDcEnds)
{
    JpegLayout layout{45, 29};
    layout.scans = kDcInSteps;
    layout.restartInterval = 2;
    const auto jpeg = test::writeJpeg(layout);
    for (std::size_t cut = 0; cut < test::endOfDcScans(jpeg); ++cut) {
        const auto result = decodeProgressiveDc(std::span(jpeg).first(cut), 0);
        EXPECT_EQ(result.outcome, Outcome::Failed) << cut;
        EXPECT_FALSE(result.error.empty()) << cut;
    }
    // Cut inside each DC scan with an end-of-image marker added, so only the
    // scan itself can tell.
    for (const auto& segment : test::segmentsOf(jpeg)) {
        if (segment.marker != 0xDA || segment.firstCoefficient != 0)
            continue;
        std::vector<std::uint8_t> cut(jpeg.begin(), jpeg.begin() + std::ptrdiff_t(segment.end - 4));
        cut.insert(cut.end(), {0xFF, 0xD9});
        EXPECT_EQ(decodeProgressiveDc(cut, 0).outcome, Outcome::Failed) << segment.at;
    }
}

// The first segment with `marker`; the test fails if there is none.
test::JpegSegment firstSegment(const std::vector<std::uint8_t>& jpeg, std::uint8_t marker)
{
    for (const auto& segment : test::segmentsOf(jpeg))
        if (segment.marker == marker)
            return segment;
    ADD_FAILURE() << "no marker " << int(marker);
    return {};
}

TEST(ProgressiveDcDecoder, FailsCleanlyOnCorruptHeadersAndData)
{
    const auto jpeg = test::writeJpeg({45, 29});
    const auto frame = firstSegment(jpeg, 0xC2).at + 4; // precision, height, width, count, components
    const auto scan = firstSegment(jpeg, 0xDA);
    const auto huffman = firstSegment(jpeg, 0xC4).at + 4;
    const auto quant = firstSegment(jpeg, 0xDB).at + 4;
    const auto data = scan.at + 2 + (jpeg[scan.at + 2] << 8 | jpeg[scan.at + 3]);
    const auto middle = (data + scan.end) / 2;
    ASSERT_GT(scan.end, data + 8);
    const std::pair<std::vector<std::pair<std::size_t, std::uint8_t>>, const char*> cases[] = {
        {{{frame + 7, 0x02}}, "bad sampling factors"},          // luma 0 x 2
        {{{frame + 7, 0x51}}, "bad sampling factors"},          // luma 5 x 1
        {{{frame + 8, 7}}, "bad quantisation table number"},
        {{{frame + 1, 0xFF}, {frame + 2, 0xFF}, {frame + 3, 0xFF}, {frame + 4, 0xFF}},
         "picture too large (65535 x 65535 pixels)"},
        {{{frame + 3, 0}, {frame + 4, 0}}, "the picture has no pixels"},
        {{{frame + 9, 1}}, "two components with one number"},
        {{{scan.at + 5, 9}}, "bad scan header"},               // no such component
        {{{scan.at + 6, 0x30}}, "missing Huffman table"},
        {{{scan.at + 13, 0x10}}, "scans out of order"},         // a refinement first
        {{{scan.at + 12, 5}}, "bad progression"},               // DC and detail in one scan
        {{{huffman, 0x05}}, "bad Huffman table"},                // table slot 5
        {{{quant, 0x04}}, "bad quantisation table"},             // table slot 4
        {{{middle, 0xFF}, {middle + 1, 0xD9}}, "a scan ends early"},
    };
    for (const auto& [patches, error] : cases) {
        auto broken = jpeg;
        for (auto [at, value] : patches)
            broken[at] = value;
        const auto result = decodeProgressiveDc(broken, 0);
        EXPECT_EQ(result.outcome, Outcome::Failed) << error;
        EXPECT_EQ(result.error, error);
    }

    // Ones alone are no code of any table (the all-ones code is reserved).
    auto ones = jpeg;
    for (std::size_t i = data; i + 1 < scan.end; i += 2) {
        ones[i] = 0xFF;
        ones[i + 1] = 0;
    }
    EXPECT_EQ(decodeProgressiveDc(ones, 0).error, "corrupt data in a scan");

    JpegLayout restarting{45, 29};
    restarting.restartInterval = 1;
    auto misnumbered = test::writeJpeg(restarting);
    const std::uint8_t second[] = {0xFF, 0xD1};
    const auto restart = std::search(misnumbered.begin(), misnumbered.end(), std::begin(second), std::end(second));
    ASSERT_NE(restart, misnumbered.end());
    restart[1] = 0xD3;
    EXPECT_EQ(decodeProgressiveDc(misnumbered, 0).error, "a restart marker is missing");
    for (const char* text : {"", "\xFF\xD8", "\xFF\xD8\xFF\xC2\x00\x01", "not a picture"})
        EXPECT_EQ(decodeProgressiveDc(std::span(reinterpret_cast<const std::uint8_t*>(text), std::strlen(text)), 0).outcome,
                  Outcome::Failed);
}

TEST(ProgressiveDcDecoder, LeavesOtherJpegsToLibjpeg)
{
    JpegLayout baseline{64, 64};
    baseline.progressive = false;
    JpegLayout cmyk{64, 64, {{1, 1}, {1, 1}, {1, 1}, {1, 1}}};
    JpegLayout rgb{64, 64, {{1, 1}, {1, 1}, {1, 1}}};
    rgb.storeRgb = true;
    JpegLayout profiled{64, 64};
    profiled.markers = {{JPEG_APP0 + 2, {'I', 'C', 'C', '_', 'P', 'R', 'O', 'F', 'I', 'L', 'E', 0, 1, 1}}};
    for (const auto* layout : {&baseline, &cmyk, &rgb, &profiled})
        EXPECT_EQ(decodeProgressiveDc(test::writeJpeg(*layout), 0).outcome, Outcome::NotOurs);
    // Sampled 3 : 2 : 1 across, which libjpeg refuses to write (and to read).
    auto fractional = test::writeJpeg({64, 64, {{1, 1}, {1, 1}, {1, 1}}});
    const auto frame = firstSegment(fractional, 0xC2).at + 4;
    fractional[frame + 7] = 0x31;
    fractional[frame + 10] = 0x21;
    EXPECT_EQ(decodeProgressiveDc(fractional, 0).outcome, Outcome::NotOurs);

    // An eighth must keep the side wanted.
    const auto jpeg = test::writeJpeg({800, 600});
    EXPECT_EQ(decodeProgressiveDc(jpeg, 100).outcome, Outcome::Decoded);
    EXPECT_EQ(decodeProgressiveDc(jpeg, 101).outcome, Outcome::NotOurs);
}

TEST(ProgressiveDcDecoder, TurnsThePictureUprightByItsExifOrientation)
{
    // A little-endian TIFF directory with the orientation alone: 6, a
    // quarter turn clockwise.
    JpegLayout layout{2400, 40};
    layout.markers = {{JPEG_APP0 + 1, {'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0,
                                       0x12, 0x01, 3, 0, 1, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0}}};
    const auto jpeg = test::writeJpeg(layout);
    const DcDecodeResult stored = decodeProgressiveDc(jpeg, 0);
    ASSERT_EQ(stored.outcome, Outcome::Decoded);
    EXPECT_EQ(stored.orientation, 6);

    test::TemporaryDirectory directory;
    test::writeFileBytes(directory / "turned.jpg", jpeg);
    const auto loaded = imageWithContentsOfFile(directory / "turned.jpg");
    ASSERT_TRUE(loaded.image) << loaded.error;
    EXPECT_EQ(loaded.image->pixelsWide(), 40);
    EXPECT_EQ(loaded.image->pixelsHigh(), 2400);
    const BitmapImageRep& upright = *loaded.image->bestRepresentation();
    ASSERT_EQ(upright.pixelsWide(), 5);
    ASSERT_EQ(upright.pixelsHigh(), 300);
    EXPECT_TRUE(std::ranges::equal(upright.bytes(), orientedUpright(*stored.rep, 6).bytes()));
}

} // namespace
} // namespace quilo
