// How long one picture's icon family takes: packing the ten elements from the
// three thumbnails, writing the family, and reading one back. Quilo does this
// once per selected picture, so a family should cost well under a millisecond.
#include "foundation/Log.h"
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "tests/support/TemporaryDirectory.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace {

using namespace quilo;

// A stand-in for a downscaled photograph: smooth shading, some detail and a
// little grain, inside a soft-edged disc on transparency, premultiplied as the
// thumbnail stage hands it over.
BitmapImageRep photoLikeThumbnail(int side)
{
    BitmapImageRep rep = BitmapImageRep::rgba(side, side);
    const double centre = side / 2.0;
    const double radius = side * 0.46;
    std::uint32_t grain = 0x9E3779B9u;
    for (int y = 0; y < side; ++y) {
        std::uint8_t* pixel = rep.row(y);
        for (int x = 0; x < side; ++x, pixel += 4) {
            const double u = (x + 0.5) / side;
            const double v = (y + 0.5) / side;
            grain = grain * 1664525u + 1013904223u;
            const double noise = double(grain >> 28) - 7.5;
            const double red = 70 + 150 * v + 20 * std::sin(u * 9.0) + noise;
            const double green = 110 + 90 * (1 - v) * u + 25 * std::sin((u + v) * 7.0) + noise;
            const double blue = 200 - 140 * v + 15 * std::cos(u * 13.0) + noise;
            const double distance = std::hypot(x + 0.5 - centre, y + 0.5 - centre);
            const double coverage = std::clamp(radius - distance + 0.5, 0.0, 1.0);
            const auto alpha = std::uint8_t(std::lround(coverage * 255));
            const auto premultiply = [&](double colour) {
                return std::uint8_t(std::lround(std::clamp(colour, 0.0, 255.0) * alpha / 255.0));
            };
            pixel[0] = premultiply(red);
            pixel[1] = premultiply(green);
            pixel[2] = premultiply(blue);
            pixel[3] = alpha;
        }
    }
    return rep;
}

struct Thumbnails {
    BitmapImageRep thumbnail = photoLikeThumbnail(128);
    BitmapImageRep large = photoLikeThumbnail(32);
    BitmapImageRep small = photoLikeThumbnail(16);
};

const Thumbnails& thumbnails()
{
    static const Thumbnails pictures;
    return pictures;
}

// The elements in the order Quilo fills them, each from its thumbnail.
struct Fill {
    OSType type;
    const BitmapImageRep& (*source)();
};

const std::array<Fill, 10> kFillOrder{{
    {kThumbnail32BitData, []() -> const BitmapImageRep& { return thumbnails().thumbnail; }},
    {kThumbnail8BitMask, []() -> const BitmapImageRep& { return thumbnails().thumbnail; }},
    {kLarge32BitData, []() -> const BitmapImageRep& { return thumbnails().large; }},
    {kLarge8BitData, []() -> const BitmapImageRep& { return thumbnails().large; }},
    {kLarge8BitMask, []() -> const BitmapImageRep& { return thumbnails().large; }},
    {kLarge1BitMask, []() -> const BitmapImageRep& { return thumbnails().large; }},
    {kSmall32BitData, []() -> const BitmapImageRep& { return thumbnails().small; }},
    {kSmall8BitData, []() -> const BitmapImageRep& { return thumbnails().small; }},
    {kSmall8BitMask, []() -> const BitmapImageRep& { return thumbnails().small; }},
    {kSmall1BitMask, []() -> const BitmapImageRep& { return thumbnails().small; }},
}};

IconFamily filledFamily()
{
    IconFamily family;
    for (const Fill& fill : kFillOrder)
        if (!family.setIconFamilyElement(fill.type, fill.source()))
            throw std::runtime_error("setIconFamilyElement refused " + fourCharCodeString(fill.type));
    return family;
}

void BM_FillFamily(benchmark::State& state)
{
    for (auto _ : state) {
        IconFamily family = filledFamily();
        benchmark::DoNotOptimize(family.iconFamilyHandle().data());
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["bytes"] = double(filledFamily().iconFamilyHandle().size());
}
BENCHMARK(BM_FillFamily)->Unit(benchmark::kMicrosecond);

// writeToFile replaces the file atomically and syncs it to disk, so this one
// also measures the file system.
void BM_FillFamilyAndWrite(benchmark::State& state)
{
    const test::TemporaryDirectory directory;
    const auto path = directory / "family.icns";
    for (auto _ : state) {
        IconFamily family = filledFamily();
        family.writeToFile(path);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FillFamilyAndWrite)->Unit(benchmark::kMicrosecond)->UseRealTime();

void BM_ReadAndDecodeFamily(benchmark::State& state)
{
    const test::TemporaryDirectory directory;
    const auto path = directory / "family.icns";
    filledFamily().writeToFile(path);
    for (auto _ : state) {
        const auto family = IconFamily::iconFamilyWithContentsOfFile(path);
        if (!family) {
            state.SkipWithError("the family written for the benchmark cannot be read");
            break;
        }
        for (OSType type : {kThumbnail32BitData, kLarge32BitData, kSmall32BitData})
            benchmark::DoNotOptimize(family->bitmapImageRepWithAlphaForIconFamilyElement(type));
        const auto image = family->imageWithAllReps();
        benchmark::DoNotOptimize(image->representations().data());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ReadAndDecodeFamily)->Unit(benchmark::kMicrosecond)->UseRealTime();

// Each element on its own, to show where a family's time goes.
void BM_SetOneElement(benchmark::State& state)
{
    const Fill& fill = kFillOrder[std::size_t(state.range(0))];
    state.SetLabel(fourCharCodeString(fill.type));
    for (auto _ : state) {
        IconFamily family;
        family.setIconFamilyElement(fill.type, fill.source());
        benchmark::DoNotOptimize(family.iconFamilyHandle().data());
    }
}
BENCHMARK(BM_SetOneElement)->DenseRange(0, int(kFillOrder.size()) - 1)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    // A refused element is reported by the exception above; keep the engine's
    // own log lines out of the table.
    quilo::setLogSink([](std::string_view) {});
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
