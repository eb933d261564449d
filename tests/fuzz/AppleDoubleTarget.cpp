// Parses the input as an AppleDouble sidecar and, when they parse, writes them back, edits
// them and reads them again.
#include "tests/fuzz/FuzzTarget.h"

#include "tests/fuzz/FuzzCheck.h"
#include "iconfamily/AppleDouble.h"

#include <algorithm>

namespace quilo::fuzz {
namespace {

void expect(bool holds, const char* promise)
{
    fuzz::expect(holds, "AppleDouble codec", promise);
}

// Where the Finder info stayed, its attribute area is kept byte for byte;
// where it had to move, the area's offsets move with it, so only its size is
// sure to be the same.
void expectAttributeAreaKept(const AppleDoubleEntry& before, const AppleDoubleEntry& after)
{
    expect(before.data.size() == after.data.size(), "the extended-attribute area must keep its size");
    if (before.offset == after.offset)
        expect(std::equal(before.data.begin() + kFinderInfoSize, before.data.end(),
                          after.data.begin() + kFinderInfoSize, after.data.end()),
               "the extended-attribute area must be kept");
}

} // namespace

void fuzzInput(std::span<const std::uint8_t> bytes)
{
    const auto sidecar = AppleDouble::parse(bytes);
    if (!sidecar)
        return;
    const auto written = sidecar->serialise();
    expect(written.has_value(), "a sidecar that was read must write back");
    expect(AppleDouble::parse(*written) == sidecar, "a sidecar must read back as written");

    AppleDouble edited = *sidecar;
    FinderInfo info = sidecar->finderInfo();
    info.setFinderFlags(std::uint16_t(info.finderFlags() | 0x0400));
    edited.setFinderInfo(info);
    edited.setResourceFork({'f', 'o', 'r', 'k'});
    const auto editedBytes = edited.serialise();
    expect(editedBytes.has_value(), "an edited sidecar must write");
    const auto reread = AppleDouble::parse(*editedBytes);
    expect(reread.has_value(), "an edited sidecar must read back");
    expect(reread->finderInfo() == info, "Finder info must read back as set");
    const auto fork = reread->resourceFork();
    expect(fork && fork->size() == 4 && (*fork)[0] == 'f', "the fork must read back as set");
    for (const AppleDoubleEntry& entry : sidecar->entries()) {
        const AppleDoubleEntry* now = reread->entry(entry.id);
        expect(now != nullptr, "no entry may be lost");
        if (entry.id == kAppleDoubleFinderInfo && entry.data.size() > kFinderInfoSize)
            expectAttributeAreaKept(entry, *now);
        else if (entry.id != kAppleDoubleFinderInfo && entry.id != kAppleDoubleResourceFork)
            expect(*now == entry, "other entries must be kept byte for byte");
    }
}

} // namespace quilo::fuzz
