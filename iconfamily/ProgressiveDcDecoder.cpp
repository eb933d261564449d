#include "iconfamily/ProgressiveDcDecoder.h"

#include "iconfamily/DcPicture.h"
#include "iconfamily/DecodeScale.h"
#include "iconfamily/ExifOrientation.h"
#include "iconfamily/JpegBitReader.h"
#include "iconfamily/PictureLoader.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace quilo {
namespace {

using jpeg::BitReader;
using jpeg::ByteSource;
using jpeg::HuffmanTable;

// Marker codes, the byte after 0xFF.
constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::uint8_t kStartOfScan = 0xDA;
constexpr std::uint8_t kQuantTables = 0xDB;
constexpr std::uint8_t kNumberOfLines = 0xDC;
constexpr std::uint8_t kRestartInterval = 0xDD;
constexpr std::uint8_t kHuffmanTables = 0xC4;
constexpr std::uint8_t kArithmeticConditioning = 0xCC;
constexpr std::uint8_t kProgressiveFrame = 0xC2;
constexpr std::uint8_t kApp0 = 0xE0;
constexpr std::uint8_t kApp1 = 0xE1;
constexpr std::uint8_t kApp2 = 0xE2;
constexpr std::uint8_t kApp14 = 0xEE;
constexpr std::uint8_t kApp15 = 0xEF;
constexpr std::uint8_t kComment = 0xFE;
constexpr std::uint8_t kTemporary = 0x01;
constexpr std::uint8_t kRestart0 = 0xD0;
constexpr std::uint8_t kRestart7 = 0xD7;

constexpr std::size_t kMaxComponents = 3;
constexpr int kTableSlots = 4;
constexpr int kMaxBlocksInMcu = 10; // in an interleaved scan
constexpr int kMaxShift = 13;       // successive approximation of 16-bit coefficients
constexpr int kMaxDcSize = 15;      // bits of a DC difference

bool isStartOfFrame(std::uint8_t code)
{
    return code >= 0xC0 && code <= 0xCF && code != kHuffmanTables && code != kArithmeticConditioning;
}

int ceilDiv(long long a, long long b)
{
    return int((a + b - 1) / b);
}

// Zeroed memory straight from the system: the blocks of a hostile header's
// huge picture cost nothing until scans fill them, and scans need data.
struct FreeMemory {
    void operator()(std::int16_t* p) const { std::free(p); }
};
using DcValues = std::unique_ptr<std::int16_t[], FreeMemory>;

struct Component {
    std::uint8_t id = 0;
    int h = 1; // sampling factors
    int v = 1;
    int quantTable = 0;
    int quant = 0;   // the DC quantiser, fixed at the component's first scan
    int shift = -1;  // how many low bits of its DC are still to come; -1 before any
    int blocksWide = 0; // the blocks that cover the picture
    int blocksHigh = 0;
    int stride = 0; // blocks in whole MCUs
    int rows = 0;
    DcValues dc;
    const HuffmanTable* table = nullptr; // of the current scan
    std::int16_t predictor = 0;
};

// Reads a marker segment's fields; callers check has() first.
class Fields {
public:
    explicit Fields(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    bool has(std::size_t count) const { return bytes_.size() - at_ >= count; }
    std::size_t left() const { return bytes_.size() - at_; }
    int u8() { return bytes_[at_++]; }
    int u16()
    {
        const int high = u8();
        return high << 8 | u8();
    }
    std::span<const std::uint8_t> take(std::size_t count)
    {
        const auto part = bytes_.subspan(at_, count);
        at_ += count;
        return part;
    }

private:
    std::span<const std::uint8_t> bytes_;
    std::size_t at_ = 0;
};

bool startsWith(std::span<const std::uint8_t> bytes, std::string_view text, std::size_t minimum)
{
    return bytes.size() >= std::max(minimum, text.size()) && std::memcmp(bytes.data(), text.data(), text.size()) == 0;
}

class DcDecoder {
public:
    DcDecoder(ByteSource& source, int wantedSide) : source_(source), wantedSide_(wantedSide) {}
    DcDecodeResult run();

private:
    enum class Step { More, Done, Stop };

    Step handle(std::uint8_t marker);
    bool readLength(std::size_t& length);
    bool readSegment();
    Step skipSegment();
    Step readFrame();
    Step readQuantTables();
    Step readHuffmanTables();
    Step readRestartInterval();
    Step readAppSegment(std::uint8_t marker);
    Step readScan();
    Step skipDetailScan(std::span<Component* const> scan, int first, int last);
    bool decodeDcScan(std::span<Component* const> scan, bool refining, int shift);
    template <typename DecodeBlock>
    bool forEachBlock(std::span<Component* const> scan, BitReader& bits, DecodeBlock decodeBlock);
    bool isYcc() const;
    bool everyDcStarted() const;
    bool everyDcComplete() const;
    BitmapImageRep picture() const;

    Step fail(std::string why)
    {
        result_.outcome = DcDecodeResult::Outcome::Failed;
        result_.error = std::move(why);
        return Step::Stop;
    }
    Step decline()
    {
        result_.outcome = DcDecodeResult::Outcome::NotOurs;
        return Step::Stop;
    }

    ByteSource& source_;
    int wantedSide_;
    DcDecodeResult result_;
    std::vector<std::uint8_t> segment_;
    std::optional<std::uint8_t> pendingMarker_;

    std::array<std::optional<int>, kTableSlots> quant_;
    std::array<std::optional<HuffmanTable>, kTableSlots> dcTables_;
    int restartInterval_ = 0;

    bool sawFrame_ = false;
    bool sawScan_ = false;
    bool sawJfif_ = false;
    bool sawProfile_ = false;
    bool sawExif_ = false;
    int adobeTransform_ = -1;

    int width_ = 0;
    int height_ = 0;
    int maxH_ = 1;
    int maxV_ = 1;
    int mcusWide_ = 0;
    int mcusHigh_ = 0;
    std::vector<Component> components_;
};

DcDecodeResult DcDecoder::run()
{
    std::array<std::uint8_t, 2> start{};
    if (!source_.read(start) || start[0] != 0xFF || start[1] != kStartOfImage) {
        fail("not a JPEG");
        return std::move(result_);
    }
    for (;;) {
        auto marker = std::exchange(pendingMarker_, std::nullopt);
        if (!marker)
            marker = source_.nextMarker();
        if (!marker) {
            fail("the file is cut short");
            return std::move(result_);
        }
        const Step step = handle(*marker);
        if (step == Step::Stop)
            return std::move(result_);
        if (step == Step::Done)
            break;
    }
    result_.outcome = DcDecodeResult::Outcome::Decoded;
    result_.rep.emplace(picture());
    return std::move(result_);
}

DcDecoder::Step DcDecoder::handle(std::uint8_t marker)
{
    if (marker == kProgressiveFrame)
        return readFrame();
    if (isStartOfFrame(marker))
        return decline(); // baseline, lossless, arithmetic-coded: libjpeg's
    if (marker == kStartOfScan)
        return readScan();
    if (marker == kEndOfImage) {
        if (!sawFrame_ || !everyDcStarted())
            return fail("the picture ends before its first scans");
        return Step::Done;
    }
    if ((marker >= kRestart0 && marker <= kRestart7) || marker == kTemporary)
        return Step::More; // no segment; restart markers of a skipped scan
    if (marker == kQuantTables)
        return readQuantTables();
    if (marker == kHuffmanTables)
        return readHuffmanTables();
    if (marker == kRestartInterval)
        return readRestartInterval();
    if (marker >= kApp0 && marker <= kApp15)
        return sawScan_ ? skipSegment() : readAppSegment(marker);
    if (marker == kComment || marker == kNumberOfLines || marker == kArithmeticConditioning)
        return skipSegment();
    return fail("unknown marker");
}

// The length of the segment's data, past its two length bytes.
bool DcDecoder::readLength(std::size_t& length)
{
    std::array<std::uint8_t, 2> bytes{};
    if (!source_.read(bytes)) {
        fail("the file is cut short");
        return false;
    }
    const std::size_t withItself = std::size_t(bytes[0] << 8 | bytes[1]);
    if (withItself < 2) {
        fail("bad segment length");
        return false;
    }
    length = withItself - 2;
    return true;
}

// Into segment_; false (having failed) if the file ends first.
bool DcDecoder::readSegment()
{
    std::size_t length = 0;
    if (!readLength(length))
        return false;
    segment_.resize(length);
    if (!source_.read(segment_)) {
        fail("the file is cut short");
        return false;
    }
    return true;
}

DcDecoder::Step DcDecoder::skipSegment()
{
    std::size_t length = 0;
    if (!readLength(length))
        return Step::Stop;
    return source_.skip(length) ? Step::More : fail("the file is cut short");
}

DcDecoder::Step DcDecoder::readFrame()
{
    if (!readSegment())
        return Step::Stop;
    if (sawFrame_)
        return fail("two frame headers");
    sawFrame_ = true;
    Fields fields(segment_);
    if (!fields.has(6))
        return fail("bad frame header");
    const int precision = fields.u8();
    height_ = fields.u16();
    width_ = fields.u16();
    const std::size_t count = std::size_t(fields.u8());
    if (count == 0 || fields.left() != 3 * count)
        return fail("bad frame header");
    if (width_ == 0 || height_ == 0)
        return fail("the picture has no pixels");
    if ((long long)width_ * height_ > kMaxPicturePixels)
        return fail("picture too large (" + std::to_string(width_) + " x " + std::to_string(height_) + " pixels)");
    if (precision != 8 || count > kMaxComponents || count == 2)
        return decline();
    components_.resize(count);
    for (auto c = components_.begin(); c != components_.end(); ++c) {
        c->id = std::uint8_t(fields.u8());
        const int sampling = fields.u8();
        c->h = sampling >> 4;
        c->v = sampling & 15;
        c->quantTable = fields.u8();
        if (c->h < 1 || c->h > 4 || c->v < 1 || c->v > 4)
            return fail("bad sampling factors");
        if (c->quantTable >= kTableSlots)
            return fail("bad quantisation table number");
        if (std::any_of(components_.begin(), c, [&](const Component& earlier) { return earlier.id == c->id; }))
            return fail("two components with one number");
        maxH_ = std::max(maxH_, c->h);
        maxV_ = std::max(maxV_, c->v);
    }
    // libjpeg, which takes the rest, refuses fractional ratios too.
    for (const Component& c : components_)
        if (maxH_ % c.h != 0 || maxV_ % c.v != 0)
            return decline();
    if (jpegScaleDenominator(std::max(width_, height_), wantedSide_) != 8)
        return decline();

    mcusWide_ = ceilDiv(width_, 8 * maxH_);
    mcusHigh_ = ceilDiv(height_, 8 * maxV_);
    for (Component& c : components_) {
        c.blocksWide = ceilDiv(ceilDiv((long long)width_ * c.h, maxH_), 8);
        c.blocksHigh = ceilDiv(ceilDiv((long long)height_ * c.v, maxV_), 8);
        c.stride = mcusWide_ * c.h;
        c.rows = mcusHigh_ * c.v;
    }
    result_.pixelsWide = width_;
    result_.pixelsHigh = height_;
    return Step::More;
}

DcDecoder::Step DcDecoder::readQuantTables()
{
    if (!readSegment())
        return Step::Stop;
    Fields fields(segment_);
    while (fields.left() > 0) {
        const int info = fields.u8();
        const int precision = info >> 4, slot = info & 15;
        const std::size_t size = precision == 0 ? 64 : 128;
        if (precision > 1 || slot >= kTableSlots || !fields.has(size))
            return fail("bad quantisation table");
        // Only the first entry, the DC quantiser, is ever used here.
        const auto values = fields.take(size);
        quant_[std::size_t(slot)] = precision == 0 ? values[0] : values[0] << 8 | values[1];
    }
    return Step::More;
}

DcDecoder::Step DcDecoder::readHuffmanTables()
{
    if (!readSegment())
        return Step::Stop;
    Fields fields(segment_);
    while (fields.left() > 0) {
        if (!fields.has(17))
            return fail("bad Huffman table");
        const int info = fields.u8();
        const int kind = info >> 4, slot = info & 15;
        const auto counts = fields.take(16);
        std::size_t total = 0;
        for (const std::uint8_t count : counts)
            total += count;
        if (kind > 1 || slot >= kTableSlots || total > 256 || !fields.has(total))
            return fail("bad Huffman table");
        const auto symbols = fields.take(total);
        if (kind == 1)
            continue; // detail tables: their scans are skipped
        // A broken table fails the scans that use it, as in libjpeg.
        auto& table = dcTables_[std::size_t(slot)];
        table = HuffmanTable::build(counts.first<16>(), symbols);
        if (std::any_of(symbols.begin(), symbols.end(), [](std::uint8_t size) { return size > kMaxDcSize; }))
            table.reset();
    }
    return Step::More;
}

DcDecoder::Step DcDecoder::readRestartInterval()
{
    if (!readSegment())
        return Step::Stop;
    if (segment_.size() != 2)
        return fail("bad restart interval");
    restartInterval_ = segment_[0] << 8 | segment_[1];
    return Step::More;
}

// What the segments before the first scan say about the colours and the
// orientation; by that scan both are settled, for libjpeg too.
DcDecoder::Step DcDecoder::readAppSegment(std::uint8_t marker)
{
    if (!readSegment())
        return Step::Stop;
    const std::span<const std::uint8_t> data(segment_);
    if (marker == kApp0 && startsWith(data, {"JFIF\0", 5}, 14))
        sawJfif_ = true;
    else if (marker == kApp1 && !sawExif_ && isExifBlock(data)) {
        sawExif_ = true;
        result_.orientation = exifOrientation(data);
    } else if (marker == kApp2)
        sawProfile_ = true;
    else if (marker == kApp14 && startsWith(data, "Adobe", 12))
        adobeTransform_ = data[11];
    return Step::More;
}

// Which colours three components hold, decided as libjpeg decides; whatever
// it would not call YCbCr is its to decode.
bool DcDecoder::isYcc() const
{
    const bool rgbIds = components_[0].id == 'R' && components_[1].id == 'G' && components_[2].id == 'B';
    const bool adobeSaysOther = !sawJfif_ && adobeTransform_ >= 0 && adobeTransform_ != 1;
    return !rgbIds && !adobeSaysOther;
}

bool DcDecoder::everyDcStarted() const
{
    return std::all_of(components_.begin(), components_.end(), [](const Component& c) { return c.shift >= 0; });
}

bool DcDecoder::everyDcComplete() const
{
    return std::all_of(components_.begin(), components_.end(), [](const Component& c) { return c.shift == 0; });
}

DcDecoder::Step DcDecoder::readScan()
{
    if (!readSegment())
        return Step::Stop;
    if (!sawFrame_)
        return fail("a scan before the frame header");
    if (!sawScan_ && (sawProfile_ || (components_.size() == 3 && !isYcc())))
        return decline(); // colour management, or RGB
    sawScan_ = true;

    Fields fields(segment_);
    const std::size_t count = fields.has(1) ? std::size_t(fields.u8()) : 0;
    if (count < 1 || count > kMaxComponents || fields.left() != 2 * count + 3)
        return fail("bad scan header");
    std::array<Component*, kMaxComponents> members{};
    std::array<int, kMaxComponents> dcSlots{};
    for (std::size_t i = 0; i < count; ++i) {
        const int id = fields.u8();
        const auto found =
            std::find_if(components_.begin(), components_.end(), [&](const Component& c) { return c.id == id; });
        if (found == components_.end() || std::find(members.begin(), members.end(), &*found) != members.end())
            return fail("bad scan header");
        members[i] = &*found;
        dcSlots[i] = fields.u8() >> 4;
    }
    const int first = fields.u8(), last = fields.u8(), approximation = fields.u8();
    const int high = approximation >> 4, shift = approximation & 15;
    if (shift > kMaxShift || (high != 0 && shift != high - 1))
        return fail("bad progression");
    const std::span<Component* const> scan(members.data(), count);
    if (first != 0)
        return everyDcComplete() ? Step::Done : skipDetailScan(scan, first, last);

    if (last != 0)
        return fail("bad progression");
    int blocksInMcu = 0;
    for (std::size_t i = 0; i < count; ++i) {
        Component& c = *scan[i];
        blocksInMcu += c.h * c.v;
        if (high != std::max(c.shift, 0))
            return fail("scans out of order");
        if (high == 0) {
            if (dcSlots[i] >= kTableSlots || !dcTables_[std::size_t(dcSlots[i])])
                return fail("missing Huffman table");
            c.table = &*dcTables_[std::size_t(dcSlots[i])];
        }
        if (!c.dc) {
            if (!quant_[std::size_t(c.quantTable)])
                return fail("missing quantisation table");
            c.quant = *quant_[std::size_t(c.quantTable)];
            const std::size_t blocks = std::size_t(c.stride) * std::size_t(c.rows);
            c.dc.reset(static_cast<std::int16_t*>(std::calloc(blocks, sizeof(std::int16_t))));
            if (!c.dc)
                return fail("out of memory");
        }
    }
    if (count > 1 && blocksInMcu > kMaxBlocksInMcu)
        return fail("bad scan header");
    if (!decodeDcScan(scan, high != 0, shift))
        return Step::Stop;
    for (Component* c : scan)
        c->shift = shift;
    return Step::More;
}

// Scans of detail have one component; their data is skipped by the search
// for the next marker.
DcDecoder::Step DcDecoder::skipDetailScan(std::span<Component* const> scan, int first, int last)
{
    if (scan.size() != 1 || last < first || last > 63)
        return fail("bad progression");
    if (scan[0]->shift < 0)
        return fail("detail before the DC coefficients");
    return Step::More;
}

bool decodeFirstDc(BitReader& bits, Component& c, std::int16_t& dc, int shift)
{
    const int size = bits.decode(*c.table);
    if (size < 0)
        return false;
    int difference = 0;
    if (size > 0) {
        const int raw = bits.bits(size);
        difference = raw < (1 << (size - 1)) ? raw - (1 << size) + 1 : raw;
    }
    // Wrapping as 16 bits keeps every stored value as libjpeg's, which
    // truncates them, and hostile sums from overflowing.
    c.predictor = std::int16_t(c.predictor + difference);
    dc = std::int16_t(c.predictor * (1 << shift));
    return true;
}

// Any bit is a valid refinement.
bool refineDc(BitReader& bits, std::int16_t& dc, int shift)
{
    if (bits.bits(1))
        dc = std::int16_t(dc | 1 << shift);
    return true;
}

bool DcDecoder::decodeDcScan(std::span<Component* const> scan, bool refining, int shift)
{
    BitReader bits(source_);
    auto refine = [&](Component&, std::int16_t& dc) { return refineDc(bits, dc, shift); };
    auto first = [&](Component& c, std::int16_t& dc) { return decodeFirstDc(bits, c, dc, shift); };
    const bool decoded = refining ? forEachBlock(scan, bits, refine) : forEachBlock(scan, bits, first);
    if (decoded)
        pendingMarker_ = bits.takeMarker();
    return decoded;
}

template <typename DecodeBlock>
bool DcDecoder::forEachBlock(std::span<Component* const> scan, BitReader& bits, DecodeBlock decodeBlock)
{
    // A scan of one component covers its picture blocks alone, one block an
    // MCU; an interleaved one covers whole MCUs of every component in it.
    const bool interleaved = scan.size() > 1;
    const int across = interleaved ? mcusWide_ : scan[0]->blocksWide;
    const int down = interleaved ? mcusHigh_ : scan[0]->blocksHigh;
    int untilRestart = restartInterval_;
    int restart = 0;
    for (Component* c : scan)
        c->predictor = 0;
    for (int y = 0; y < down; ++y) {
        for (int x = 0; x < across; ++x) {
            if (restartInterval_ > 0 && untilRestart-- == 0) {
                if (!bits.restart(restart)) {
                    fail("a restart marker is missing");
                    return false;
                }
                untilRestart = restartInterval_ - 1;
                restart = (restart + 1) % 8;
                for (Component* c : scan)
                    c->predictor = 0;
            }
            for (Component* c : scan) {
                const int wide = interleaved ? c->h : 1, high = interleaved ? c->v : 1;
                std::int16_t* mcu = c->dc.get() + std::size_t(y * high) * std::size_t(c->stride)
                                    + std::size_t(x * wide);
                for (int v = 0; v < high; ++v, mcu += c->stride)
                    for (int h = 0; h < wide; ++h)
                        if (!decodeBlock(*c, mcu[h])) {
                            fail("corrupt data in a scan");
                            return false;
                        }
            }
            // Checked every MCU, so a scan cut short stops at once, however
            // many blocks its header claims.
            if (bits.overran()) {
                fail("a scan ends early");
                return false;
            }
        }
    }
    return true;
}

BitmapImageRep DcDecoder::picture() const
{
    std::array<DcPlane, kMaxComponents> planes{};
    for (std::size_t i = 0; i < components_.size(); ++i) {
        const Component& c = components_[i];
        planes[i] = {c.dc.get(), std::size_t(c.stride), c.quant, maxH_ / c.h, maxV_ / c.v};
    }
    return dcPicture(std::span(planes).first(components_.size()), ceilDiv(width_, 8), ceilDiv(height_, 8));
}

} // namespace

DcDecodeResult decodeProgressiveDc(std::FILE* file, int wantedSide)
{
    ByteSource source(file);
    return DcDecoder(source, wantedSide).run();
}

DcDecodeResult decodeProgressiveDc(std::span<const std::uint8_t> jpeg, int wantedSide)
{
    ByteSource source(jpeg);
    return DcDecoder(source, wantedSide).run();
}

} // namespace quilo
