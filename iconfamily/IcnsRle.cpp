#include "iconfamily/IcnsRle.h"

#include <algorithm>

namespace quilo::icnsrle {
namespace {

struct Run {
    std::size_t start;
    std::size_t length;
    bool repeat;
    bool opensChannel;
};

std::size_t repeatLengthAt(const Channel& channel, std::size_t i)
{
    std::size_t length = 1;
    while (i + length < channel.count && length < kMaxRepeat + kMinRepeat
           && channel[i + length] == channel[i])
        ++length;
    return length;
}

// Greedy plan: repeats for runs of three or more, literals in between.
void planChannel(const Channel& channel, std::vector<Run>& runs)
{
    const std::size_t channelFirstRun = runs.size();
    std::size_t literalStart = 0;
    std::size_t i = 0;
    auto flushLiteral = [&](std::size_t end) {
        while (literalStart < end) {
            const std::size_t length = std::min(end - literalStart, kMaxLiteral);
            runs.push_back({literalStart, length, false, runs.size() == channelFirstRun});
            literalStart += length;
        }
    };
    while (i < channel.count) {
        std::size_t repeat = repeatLengthAt(channel, i);
        // The channel's first byte stays in a literal of at least two bytes.
        const bool loneOpeningByte = (i == 1 && literalStart == 0);
        if (repeat < kMinRepeat || loneOpeningByte) {
            ++i;
            continue;
        }
        if (repeat > kMaxRepeat)
            repeat = (repeat - kMaxRepeat < kMinRepeat) ? repeat - kMinRepeat : kMaxRepeat;
        flushLiteral(i);
        runs.push_back({i, repeat, true, runs.size() == channelFirstRun});
        i += repeat;
        literalStart = i;
    }
    flushLiteral(channel.count);
}

std::size_t packedSize(const std::vector<Run>& runs)
{
    std::size_t size = 0;
    for (const Run& run : runs)
        size += run.repeat ? 2 : 1 + run.length;
    return size;
}

// Splitting a literal adds one control byte. The piece left at a channel's
// start keeps at least two bytes.
bool splitOneLiteral(std::vector<Run>& runs)
{
    for (std::size_t r = runs.size(); r-- > 0;) {
        Run& run = runs[r];
        const std::size_t minHead = run.opensChannel ? 2 : 1;
        if (run.repeat || run.length < minHead + 1)
            continue;
        const Run tail{run.start + minHead, run.length - minHead, false, false};
        run.length = minHead;
        runs.insert(runs.begin() + std::ptrdiff_t(r) + 1, tail);
        return true;
    }
    return false;
}

// With no literal to split, a short repeat written as a literal adds bytes too.
void literaliseOneRepeat(std::vector<Run>& runs)
{
    for (Run& run : runs) {
        if (run.repeat && run.length <= kMaxLiteral) {
            run.repeat = false;
            return;
        }
    }
}

// One channel after another, no run reaching past its channel's end: a
// literal gives, and uses up, only the bytes its channel still needs.
std::size_t unpackEachChannel(std::span<const std::uint8_t> data, std::span<std::uint8_t> out,
                              std::size_t channelSize)
{
    std::size_t in = 0;
    for (std::size_t start = 0; start < out.size(); start += channelSize) {
        const std::span<std::uint8_t> channel = out.subspan(start, std::min(channelSize, out.size() - start));
        std::size_t filled = 0;
        while (filled < channel.size()) {
            if (in >= data.size())
                return 0;
            const std::uint8_t control = data[in++];
            const bool literal = control < 0x80;
            const std::size_t length = literal ? std::size_t(control) + 1 : std::size_t(control) - 0x80 + kMinRepeat;
            const std::size_t kept = std::min(length, channel.size() - filled);
            if (in >= data.size() || (literal && kept > data.size() - in))
                return 0;
            if (literal) {
                std::copy_n(data.begin() + std::ptrdiff_t(in), kept, channel.begin() + std::ptrdiff_t(filled));
                in += kept;
            } else {
                std::fill_n(channel.begin() + std::ptrdiff_t(filled), kept, data[in++]);
            }
            filled += kept;
        }
    }
    return in;
}

bool isAvoided(std::size_t size, std::initializer_list<std::size_t> avoidLengths)
{
    return std::find(avoidLengths.begin(), avoidLengths.end(), size) != avoidLengths.end();
}

void writeRuns(const std::vector<Run>& runs, std::size_t firstRun, std::size_t endRun,
               const Channel& channel, std::vector<std::uint8_t>& out)
{
    for (std::size_t r = firstRun; r < endRun; ++r) {
        const Run& run = runs[r];
        if (run.repeat) {
            out.push_back(std::uint8_t(0x80 + run.length - kMinRepeat));
            out.push_back(channel[run.start]);
        } else {
            out.push_back(std::uint8_t(run.length - 1));
            for (std::size_t k = 0; k < run.length; ++k)
                out.push_back(channel[run.start + k]);
        }
    }
}

} // namespace

std::vector<std::uint8_t> pack(std::initializer_list<Channel> channels,
                               std::span<const std::uint8_t> prefix,
                               std::initializer_list<std::size_t> avoidLengths)
{
    std::vector<Run> runs;
    for (const Channel& channel : channels)
        planChannel(channel, runs);
    for (int attempt = 0; attempt < 4 && isAvoided(prefix.size() + packedSize(runs), avoidLengths); ++attempt) {
        if (!splitOneLiteral(runs))
            literaliseOneRepeat(runs);
    }
    std::vector<std::uint8_t> out(prefix.begin(), prefix.end());
    out.reserve(prefix.size() + packedSize(runs));
    // Runs never cross channels, so each channel's runs are the next ones that
    // cover its bytes.
    std::size_t firstRun = 0;
    for (const Channel& channel : channels) {
        std::size_t endRun = firstRun;
        std::size_t covered = 0;
        while (endRun < runs.size() && covered < channel.count)
            covered += runs[endRun++].length;
        writeRuns(runs, firstRun, endRun, channel, out);
        firstRun = endRun;
    }
    return out;
}

std::size_t unpack(std::span<const std::uint8_t> data, std::span<std::uint8_t> out)
{
    std::size_t in = 0;
    std::size_t filled = 0;
    while (filled < out.size()) {
        if (in >= data.size())
            return 0;
        const std::uint8_t control = data[in++];
        if (control < 0x80) {
            const std::size_t length = std::size_t(control) + 1;
            if (length > data.size() - in)
                return 0;
            const std::size_t kept = std::min(length, out.size() - filled);
            std::copy_n(data.begin() + std::ptrdiff_t(in), kept, out.begin() + std::ptrdiff_t(filled));
            in += length;
            filled += kept;
        } else {
            if (in >= data.size())
                return 0;
            const std::size_t length = std::size_t(control) - 0x80 + kMinRepeat;
            const std::size_t kept = std::min(length, out.size() - filled);
            std::fill_n(out.begin() + std::ptrdiff_t(filled), kept, data[in++]);
            filled += kept;
        }
    }
    return in;
}

std::size_t unpackChannels(std::span<const std::uint8_t> data, std::span<std::uint8_t> out,
                           std::size_t channelSize)
{
    const std::size_t used = unpack(data, out);
    if (used == data.size() || channelSize == 0)
        return used;
    std::vector<std::uint8_t> channels(out.size());
    if (unpackEachChannel(data, channels, channelSize) != data.size())
        return used;
    std::copy(channels.begin(), channels.end(), out.begin());
    return data.size();
}

} // namespace quilo::icnsrle
