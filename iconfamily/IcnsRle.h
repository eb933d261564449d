#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

// The run-length scheme of 32-bit icon elements. A control byte below 0x80 is
// followed by (control + 1) literal bytes; from 0x80 up, the next byte is
// repeated (control - 0x80 + 3) times. Each colour channel is packed on its own.
namespace quilo::icnsrle {

constexpr std::size_t kMaxLiteral = 128;
constexpr std::size_t kMinRepeat = 3;
constexpr std::size_t kMaxRepeat = 130;

// Every `stride`-th byte from `first`: one channel of interleaved pixels.
struct Channel {
    const std::uint8_t* first;
    std::size_t count;
    std::size_t stride = 1;
    std::uint8_t operator[](std::size_t i) const { return first[i * stride]; }
};

// Packs the channels one after another behind `prefix`. A channel never opens
// with a one-byte literal (a reader misreads that). If the packed length would
// be one of `avoidLengths` (readers take such lengths for uncompressed data),
// one literal run is split so the length moves off it.
std::vector<std::uint8_t> pack(std::initializer_list<Channel> channels,
                               std::span<const std::uint8_t> prefix,
                               std::initializer_list<std::size_t> avoidLengths);

// Unpacks exactly out.size() bytes. Runs may cross from one channel into the
// next (other encoders do that). Returns the number of input bytes used, or 0
// when the data ends before the output is full.
std::size_t unpack(std::span<const std::uint8_t> data, std::span<std::uint8_t> out);

// Unpacks `out` as channels of `channelSize` bytes. Data that unpacks as one
// stream and ends with its last run is read so; data that doesn't, but does
// when each channel is read on its own with a literal cut short at the
// channel's end, is read that way: png2icons writes a channel's last one or
// two bytes under a count one too high. Returns the input bytes used, or 0
// when neither reading fills `out`.
std::size_t unpackChannels(std::span<const std::uint8_t> data, std::span<std::uint8_t> out,
                           std::size_t channelSize);

} // namespace quilo::icnsrle
