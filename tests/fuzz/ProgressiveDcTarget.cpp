// Decodes the input as a progressive JPEG from its DC scans, from memory and
// through the chunked file reader.
#include "tests/fuzz/FuzzTarget.h"

#include "tests/fuzz/FuzzCheck.h"
#include "iconfamily/PictureLoader.h"
#include "iconfamily/ProgressiveDcDecoder.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace quilo::fuzz {
namespace {

void expect(bool holds, const char* promise)
{
    fuzz::expect(holds, "progressive JPEG decoder", promise);
}

bool isOpaque(const BitmapImageRep& rep)
{
    const auto bytes = rep.bytes();
    for (std::size_t i = 3; i < bytes.size(); i += 4)
        if (bytes[i] != 255)
            return false;
    return true;
}

} // namespace

void fuzzInput(std::span<const std::uint8_t> bytes)
{
    // 0: decode whatever the size, so small inputs reach the scans.
    const DcDecodeResult fromMemory = decodeProgressiveDc(bytes, 0);
    switch (fromMemory.outcome) {
    case DcDecodeResult::Outcome::Failed:
        expect(!fromMemory.error.empty(), "a failure must say why");
        break;
    case DcDecodeResult::Outcome::NotOurs:
        break;
    case DcDecodeResult::Outcome::Decoded: {
        expect(fromMemory.rep.has_value(), "a decoded picture must have pixels");
        const BitmapImageRep& rep = *fromMemory.rep;
        expect((long long)fromMemory.pixelsWide * fromMemory.pixelsHigh <= kMaxPicturePixels,
               "no picture may pass the pixel limit");
        expect(rep.pixelsWide() == (fromMemory.pixelsWide + 7) / 8 && rep.pixelsHigh() == (fromMemory.pixelsHigh + 7) / 8,
               "the picture must be an eighth of its size, rounded up");
        expect(rep.samplesPerPixel() == 4 && isOpaque(rep), "the picture must be opaque R G B A");
        expect(fromMemory.orientation >= 1 && fromMemory.orientation <= 8, "the orientation must be one of the eight");
        break;
    }
    }

    if (bytes.empty())
        return; // fmemopen refuses an empty buffer
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
        fmemopen(const_cast<std::uint8_t*>(bytes.data()), bytes.size(), "rb"), &std::fclose);
    expect(file != nullptr, "the bytes must open as a file");
    const DcDecodeResult fromFile = decodeProgressiveDc(file.get(), 0);
    expect(fromFile.outcome == fromMemory.outcome && fromFile.error == fromMemory.error,
           "a file must decode as its bytes in memory do");
    expect(!fromMemory.rep || std::ranges::equal(fromFile.rep->bytes(), fromMemory.rep->bytes()),
           "a file must give the pixels its bytes in memory give");
}

} // namespace quilo::fuzz
