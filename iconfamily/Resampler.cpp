#include "iconfamily/Resampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace quilo {
namespace {

// The filter weights of one axis: for each canvas pixel, a run of source
// pixels and their weights (summing to 1), and how much of the pixel the
// drawn rectangle covers.
struct AxisWeights {
    std::vector<int> first;
    std::vector<int> count;
    std::vector<std::size_t> offset;
    std::vector<float> weights;
    std::vector<float> coverage;
};

double lanczos3(double x)
{
    x = std::abs(x);
    if (x < 1e-9)
        return 1.0;
    if (x >= 3.0)
        return 0.0;
    const double px = std::numbers::pi * x;
    return 3.0 * std::sin(px) * std::sin(px / 3.0) / (px * px);
}

// Taps around `centre` (in source pixel coordinates, pixel j spanning
// [j, j + 1]); indices outside the source are folded onto its edge pixels.
void addTaps(AxisWeights& axis, int sourceSize, double centre, double scale, ImageInterpolation interpolation)
{
    std::vector<double> taps;
    int first = 0;
    const double x = centre - 0.5;
    switch (interpolation) {
    case ImageInterpolation::None:
        first = int(std::floor(centre));
        taps = {1.0};
        break;
    case ImageInterpolation::Low:
        first = int(std::floor(x));
        taps = {1.0 - (x - first), x - first};
        break;
    default: {
        const double widen = std::max(scale, 1.0);
        const double support = 3.0 * widen;
        first = int(std::ceil(x - support));
        const int last = int(std::floor(x + support));
        for (int j = first; j <= last; ++j)
            taps.push_back(lanczos3((j - x) / widen));
    }
    }
    const int lo = std::clamp(first, 0, sourceSize - 1);
    const int hi = std::clamp(first + int(taps.size()) - 1, 0, sourceSize - 1);
    std::vector<double> folded(std::size_t(hi - lo + 1), 0.0);
    double sum = 0.0;
    for (std::size_t t = 0; t < taps.size(); ++t) {
        folded[std::size_t(std::clamp(first + int(t), lo, hi) - lo)] += taps[t];
        sum += taps[t];
    }
    axis.first.push_back(lo);
    axis.count.push_back(hi - lo + 1);
    axis.offset.push_back(axis.weights.size());
    for (double weight : folded)
        axis.weights.push_back(float(weight / sum));
}

AxisWeights axisWeights(int sourceSize, int canvasSize, double origin, double length,
                        ImageInterpolation interpolation)
{
    AxisWeights axis;
    const double scale = sourceSize / length;
    for (int i = 0; i < canvasSize; ++i) {
        const double from = std::max<double>(i, origin);
        const double to = std::min<double>(i + 1, origin + length);
        const double covered = std::max(0.0, to - from);
        axis.coverage.push_back(float(covered));
        // The colour is the one of the covered part of the pixel.
        const double centre = covered > 0 ? ((from + to) / 2 - origin) * scale : 0.0;
        addTaps(axis, sourceSize, centre, scale, interpolation);
    }
    return axis;
}

std::uint8_t toByte(float value)
{
    return std::uint8_t(std::clamp(value, 0.0f, 255.0f) + 0.5f);
}

} // namespace

BitmapImageRep drawInClearSquare(const BitmapImageRep& source, int side, DrawRect rect,
                                 ImageInterpolation interpolation)
{
    BitmapImageRep canvas = BitmapImageRep::rgba(side, side);
    const int sourceWide = source.pixelsWide();
    const int sourceHigh = source.pixelsHigh();
    if (sourceWide <= 0 || sourceHigh <= 0 || !(rect.width > 0) || !(rect.height > 0))
        return canvas;
    const AxisWeights columns = axisWeights(sourceWide, side, rect.x, rect.width, interpolation);
    const AxisWeights rows = axisWeights(sourceHigh, side, rect.y, rect.height, interpolation);

    // Horizontal pass over every source row, for the covered columns only.
    const std::size_t rowFloats = std::size_t(side) * 4;
    std::vector<float> across(std::size_t(sourceHigh) * rowFloats, 0.0f);
    for (int y = 0; y < sourceHigh; ++y) {
        const std::uint8_t* in = source.row(y);
        float* out = across.data() + std::size_t(y) * rowFloats;
        for (int x = 0; x < side; ++x) {
            if (columns.coverage[std::size_t(x)] <= 0)
                continue;
            const float* weight = columns.weights.data() + columns.offset[std::size_t(x)];
            const std::uint8_t* pixel = in + 4 * columns.first[std::size_t(x)];
            float sum[4] = {0, 0, 0, 0};
            for (int t = 0; t < columns.count[std::size_t(x)]; ++t, pixel += 4)
                for (int c = 0; c < 4; ++c)
                    sum[c] += weight[t] * float(pixel[c]);
            std::copy_n(sum, 4, out + 4 * x);
        }
    }

    // Vertical pass, then coverage and the premultiplied invariant (ringing
    // must not leave colour above its alpha).
    for (int y = 0; y < side; ++y) {
        const float rowCoverage = rows.coverage[std::size_t(y)];
        if (rowCoverage <= 0)
            continue;
        const float* weight = rows.weights.data() + rows.offset[std::size_t(y)];
        std::uint8_t* out = canvas.row(y);
        for (int x = 0; x < side; ++x) {
            const float coverage = rowCoverage * columns.coverage[std::size_t(x)];
            if (coverage <= 0)
                continue;
            float sum[4] = {0, 0, 0, 0};
            const float* in = across.data() + std::size_t(rows.first[std::size_t(y)]) * rowFloats + 4 * x;
            for (int t = 0; t < rows.count[std::size_t(y)]; ++t, in += rowFloats)
                for (int c = 0; c < 4; ++c)
                    sum[c] += weight[t] * in[c];
            const std::uint8_t alpha = toByte(sum[3] * coverage);
            for (int c = 0; c < 3; ++c)
                out[4 * x + c] = std::min(toByte(sum[c] * coverage), alpha);
            out[4 * x + 3] = alpha;
        }
    }
    return canvas;
}

BitmapImageRep boxReduced(const BitmapImageRep& source, int factor)
{
    const int wide = (source.pixelsWide() + factor - 1) / factor;
    const int high = (source.pixelsHigh() + factor - 1) / factor;
    BitmapImageRep reduced = BitmapImageRep::rgba(wide, high);
    std::vector<std::uint32_t> sums(std::size_t(wide) * 4);
    for (int y = 0; y < high; ++y) {
        std::fill(sums.begin(), sums.end(), 0);
        const int firstRow = y * factor;
        const int rows = std::min(factor, source.pixelsHigh() - firstRow);
        for (int r = 0; r < rows; ++r) {
            const std::uint8_t* in = source.row(firstRow + r);
            for (int x = 0; x < source.pixelsWide(); ++x)
                for (int c = 0; c < 4; ++c)
                    sums[std::size_t(x / factor) * 4 + std::size_t(c)] += in[4 * x + c];
        }
        std::uint8_t* out = reduced.row(y);
        for (int x = 0; x < wide; ++x) {
            const auto count = std::uint32_t(rows * std::min(factor, source.pixelsWide() - x * factor));
            for (int c = 0; c < 4; ++c)
                out[4 * x + c] = std::uint8_t((sums[std::size_t(x) * 4 + std::size_t(c)] + count / 2) / count);
        }
    }
    return reduced;
}

} // namespace quilo
