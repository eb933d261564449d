// Runs every reading path of the engine, and a write on top, over the input
// taken as an .icns file.
#include "tests/fuzz/FuzzTarget.h"

#include "tests/fuzz/FuzzCheck.h"
#include "foundation/Log.h"
#include "iconfamily/ElementDecoder.h"
#include "iconfamily/EmbeddedImage.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/IconServices.h"
#include "iconfamily/ImageCodecs.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace quilo::fuzz {
namespace {

using Bytes = std::span<const std::uint8_t>;

void expect(bool holds, const char* promise, OSType type = 0)
{
    fuzz::expect(holds, "icns reader", promise, type ? fourCharCodeString(type) : std::string());
}

[[noreturn]] void broken(const char* promise, OSType type = 0)
{
    expect(false, promise, type);
    std::abort();
}

// Types that hold no picture, asked for beside every type the engine reads.
constexpr std::array kOtherTypes{fourCharCode("TOC "), fourCharCode("icnV"), fourCharCode("name"),
                                 fourCharCode("info")};

struct Writable {
    OSType type;
    int side;
};

// The order Quilo fills a family in.
constexpr std::array<Writable, 10> kWritable{{
    {kThumbnail32BitData, 128}, {kThumbnail8BitMask, 128}, {kLarge32BitData, 32}, {kLarge8BitData, 32},
    {kLarge8BitMask, 32},       {kLarge1BitMask, 32},      {kSmall32BitData, 16}, {kSmall8BitData, 16},
    {kSmall8BitMask, 16},       {kSmall1BitMask, 16},
}};

void checkElementData(Bytes bytes, const std::optional<std::vector<IcnsElement>>& elements, OSType type)
{
    std::vector<std::uint8_t> data;
    const OSErr result = getIconFamilyData(bytes, type, data);
    if (!elements) {
        expect(result == invalidIconRefErr, "a malformed block must be refused", type);
        return;
    }
    const IcnsElement* element = findElement(*elements, type);
    if (!element) {
        expect(result == noSuchIconErr, "a missing element must be reported missing", type);
        return;
    }
    const ElementGeometry* geometry = elementGeometry(type);
    if (geometry && geometry->encoding == ElementEncoding::Rgb32) {
        expect(result == noErr || result == invalidIconRefErr, "an unreadable colour element is an error", type);
        if (result == noErr)
            expect(data.size() == std::size_t(elementDataSize(*geometry)),
                   "32-bit colour must come back as one A R G B quad a pixel", type);
        return;
    }
    expect(result == noErr, "an element that is present must be returned", type);
    const Bytes stored = bytes.subspan(element->dataOffset, element->dataSize);
    expect(std::equal(data.begin(), data.end(), stored.begin(), stored.end()),
           "an element other than 32-bit colour must come back as stored", type);
}

void checkColourWithMask(const IconFamily& family, OSType type)
{
    const auto rep = family.bitmapImageRepWithAlphaForIconFamilyElement(type);
    std::vector<std::uint8_t> argb;
    const bool readable = getIconFamilyData(family.iconFamilyHandle(), type, argb) == noErr;
    expect(bool(rep) == readable, "a colour element must give a bitmap exactly when it is readable", type);
    if (!rep)
        return;
    const int side = elementGeometry(type)->width;
    expect(rep->pixelsWide() == side && rep->pixelsHigh() == side && rep->samplesPerPixel() == 4,
           "a colour element's bitmap must have the element's size", type);
    for (std::size_t i = 0; i < argb.size() / 4; ++i)
        expect(std::equal(argb.begin() + std::ptrdiff_t(4 * i + 1), argb.begin() + std::ptrdiff_t(4 * i + 4),
                          rep->bitmapData() + 4 * i),
               "a colour element's bitmap must keep the element's colour", type);
}

void checkDecoding(const IconFamily& family, bool withImage)
{
    const auto decoded = decodeElements(family.iconFamilyHandle(), DecodeMasks::Yes);
    std::size_t pictures = 0;
    for (const DecodedElement& element : decoded) {
        expect(element.channels == 4 || element.channels == 1, "a decoded element has 4 or 1 channels",
               element.type);
        expect(element.width > 0 && element.height > 0 && element.width <= kMaxEmbeddedSide
                   && element.height <= kMaxEmbeddedSide,
               "a decoded element has a sane size", element.type);
        expect(element.pixels.size()
                   == std::size_t(element.width) * std::size_t(element.height) * std::size_t(element.channels),
               "a decoded element's pixels fill its size", element.type);
        expect(!element.encoding.empty(), "a decoded element says how it was stored", element.type);
        pictures += element.channels == 4 ? 1 : 0;
    }
    if (!withImage)
        return;
    const auto image = family.imageWithAllReps();
    expect(image->representations().size() == pictures, "the image has one representation per picture");
    for (const BitmapImageRep& rep : image->representations())
        expect(rep.samplesPerPixel() == 4 && rep.bytes().size() >= std::size_t(rep.pixelsWide()) * 4,
               "a representation is an R G B A bitmap");
}

// A bitmap of the wanted side whose pixels come from the input, so the packers
// see whatever the fuzzer makes up, colour above alpha included.
BitmapImageRep bitmapFromInput(Bytes bytes, int side)
{
    BitmapImageRep rep = BitmapImageRep::rgba(side, side);
    if (bytes.empty())
        return rep;
    // Tiled from the input, starting at an offset of its own for each size.
    std::uint8_t* out = rep.bitmapData();
    std::size_t left = rep.bytes().size();
    std::size_t from = std::size_t(side) % bytes.size();
    while (left > 0) {
        const std::size_t count = std::min(left, bytes.size() - from);
        std::copy_n(bytes.begin() + std::ptrdiff_t(from), count, out);
        out += count;
        left -= count;
        from = 0;
    }
    return rep;
}

std::vector<std::uint8_t> expectedElementData(OSType type, const BitmapImageRep& rep, int side)
{
    IconFamily::ElementData data;
    const ElementGeometry* geometry = elementGeometry(type);
    switch (geometry->encoding) {
    case ElementEncoding::Rgb32:
        data = IconFamily::get32BitDataFromBitmapImageRep(rep, side);
        if (data)
            // Stored packed without alpha: it comes back opaque.
            for (std::size_t i = 0; i < data->size(); i += 4)
                (*data)[i] = 0xFF;
        break;
    case ElementEncoding::Mask8: data = IconFamily::get8BitMaskFromBitmapImageRep(rep, side); break;
    case ElementEncoding::Palette8: data = IconFamily::get8BitDataFromBitmapImageRep(rep, side); break;
    case ElementEncoding::OneBitPair: data = IconFamily::get1BitMaskFromBitmapImageRep(rep, side); break;
    default: broken("not a type Quilo writes", type);
    }
    expect(data.has_value(), "an R G B A bitmap of the right size must pack", type);
    return *data;
}

// An input's own number, the same on every run: it picks what each input
// checks of the slow paths, so that a run covers them all over many inputs
// without paying for all of them on every input.
std::uint32_t inputHash(Bytes bytes)
{
    std::uint32_t hash = 2166136261u;
    for (std::uint8_t byte : bytes)
        hash = (hash ^ byte) * 16777619u;
    return hash;
}

// Sets one of the ten elements (picked by the input) on top of the block
// read, then checks that the block is still a family, the element reads back
// as packed and every other element is untouched.
void checkWritingOnTop(Bytes bytes, const std::optional<std::vector<IcnsElement>>& before, std::uint32_t hash)
{
    IconFamily family(IconFamilyHandle(bytes.begin(), bytes.end()));
    const Writable& writable = kWritable[hash % kWritable.size()];
    const IconFamilyHandle old = family.iconFamilyHandle();
    const auto oldElements = parseIconFamily(old);
    const BitmapImageRep rep = bitmapFromInput(bytes, writable.side);
    const bool set = family.setIconFamilyElement(writable.type, rep);
    if (!before) {
        expect(!set, "setting an element on a malformed block must fail", writable.type);
        expect(family.iconFamilyHandle() == old, "a refused set must leave the block alone", writable.type);
        return;
    }
    expect(set, "setting an element on a family must succeed", writable.type);
    const IconFamilyHandle& now = family.iconFamilyHandle();
    const auto elements = parseIconFamily(now);
    expect(elements.has_value(), "a family must stay well-formed after a set", writable.type);
    std::vector<std::uint8_t> data;
    expect(getIconFamilyData(now, writable.type, data) == noErr, "a set element must read back",
           writable.type);
    expect(data == expectedElementData(writable.type, rep, writable.side),
           "a set element must read back as packed", writable.type);
    const bool replaced = findElement(*oldElements, writable.type) != nullptr;
    expect(elements->size() == oldElements->size() + (replaced ? 0 : 1),
           "a set replaces the first element of its type or appends one", writable.type);
    for (std::size_t i = 0; i < oldElements->size(); ++i) {
        const IcnsElement& a = (*oldElements)[i];
        const IcnsElement& b = (*elements)[i];
        expect(a.type == b.type, "a set keeps the order of the elements", writable.type);
        if (&a == findElement(*oldElements, writable.type))
            continue;
        expect(std::equal(old.begin() + std::ptrdiff_t(a.dataOffset),
                          old.begin() + std::ptrdiff_t(a.dataOffset + a.dataSize),
                          now.begin() + std::ptrdiff_t(b.dataOffset), now.begin() + std::ptrdiff_t(b.dataOffset + b.dataSize)),
               "a set leaves the other elements' data alone", writable.type);
    }
}

// The same bytes through the file reader, from one scratch file per process.
const std::filesystem::path& scratchFile()
{
    static const std::filesystem::path path = [] {
        std::string pattern = (std::filesystem::temp_directory_path() / "quilo-fuzz-XXXXXX").string();
        const int fd = ::mkstemp(pattern.data());
        if (fd < 0)
            broken("cannot make a scratch file");
        ::close(fd);
        std::atexit([] { std::filesystem::remove(scratchFile()); });
        return std::filesystem::path(pattern);
    }();
    return path;
}

void checkFileReader(Bytes bytes, bool wellFormed)
{
    {
        std::ofstream file(scratchFile(), std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    }
    const auto family = IconFamily::iconFamilyWithContentsOfFile(scratchFile());
    if (wellFormed && !bytes.empty())
        expect(family != nullptr, "a well-formed family must read from a file");
    if (!family)
        return;
    // Bytes behind the family's declared length are dropped.
    const IconFamilyHandle& block = family->iconFamilyHandle();
    expect(block.size() <= bytes.size() && std::equal(block.begin(), block.end(), bytes.begin()),
           "a family read from a file is the file's leading bytes");
    expect(parseIconFamily(block).has_value(), "a family read from a file is well-formed");
    checkDecoding(*family, true);
}

} // namespace

void fuzzInput(Bytes bytes)
{
    static const bool ready = [] {
        // Without the image library module every embedded picture would be
        // skipped as unreadable, and the run would look clean.
        expect(imageCodecs() != nullptr, "the image library module must load");
        // The packers log their refusals; thousands of runs a second would
        // flood stderr and the system log.
        setLogSink([](std::string_view) {});
        return true;
    }();
    (void)ready;

    const auto elements = parseIconFamily(bytes);
    const auto family = IconFamily::iconFamilyWithIconFamilyHandle(IconFamilyHandle(bytes.begin(), bytes.end()));
    // Decoding dominates a run, so each input reads in full one element (of
    // those present) and writes one element on top, both picked by the input;
    // one input in 3 checks a colour element with its mask, one in 4 decodes
    // every element, and one in 32 also goes through the file reader, which
    // decodes every element again as pictures.
    const std::uint32_t hash = inputHash(bytes);
    const auto present = [&](OSType type) { return elements && findElement(*elements, type); };
    for (const ElementGeometry& geometry : elementGeometries())
        if (!present(geometry.type))
            checkElementData(bytes, elements, geometry.type);
    for (OSType type : kOtherTypes)
        if (!present(type))
            checkElementData(bytes, elements, type);
    if (elements && !elements->empty())
        checkElementData(bytes, elements, (*elements)[hash % elements->size()].type);
    constexpr std::array kColours{kThumbnail32BitData, kLarge32BitData, kSmall32BitData};
    if (hash % 3 == 0)
        checkColourWithMask(*family, kColours[hash / 7 % kColours.size()]);
    const bool throughFile = hash % 32 == 0;
    if (hash % 4 == 1)
        checkDecoding(*family, false);
    checkWritingOnTop(bytes, elements, hash);
    if (throughFile)
        checkFileReader(bytes, elements.has_value());
}

} // namespace quilo::fuzz
