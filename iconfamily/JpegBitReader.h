#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <vector>

// Reading a JPEG's bytes, and the Huffman-coded bits of its scans. The bytes
// are untrusted: reads past the end fail, and a scan that runs out of data
// is reported rather than made up.
namespace quilo::jpeg {

// A JPEG's bytes from memory, or from a file a chunk at a time so a large
// file is never held whole.
class ByteSource {
public:
    explicit ByteSource(std::span<const std::uint8_t> bytes);
    // Reads from the file's current position; the file stays open.
    explicit ByteSource(std::FILE* file);

    // False at the end of the data (or on a read error).
    bool next(std::uint8_t& byte)
    {
        if (at_ == end_ && !refill())
            return false;
        byte = *at_++;
        return true;
    }
    bool read(std::span<std::uint8_t> out);
    bool skip(std::size_t count);

    // The code of the next marker, skipping whatever comes before it (the
    // rest of a scan, or stray bytes, which cameras leave between segments).
    // None at the end of the data.
    std::optional<std::uint8_t> nextMarker();

private:
    bool refill();

    const std::uint8_t* at_ = nullptr;
    const std::uint8_t* end_ = nullptr;
    std::FILE* file_ = nullptr;
    std::vector<std::uint8_t> chunk_;
};

// A canonical Huffman code as a DHT segment gives it: how many codes there
// are of each length from 1 to 16 bits, and their symbols in code order.
class HuffmanTable {
public:
    // None when the counts over-fill a length or there are more than 256
    // symbols.
    static std::optional<HuffmanTable> build(std::span<const std::uint8_t, 16> counts,
                                             std::span<const std::uint8_t> symbols);

private:
    friend class BitReader;
    static constexpr int kLookupBits = 9;

    // Indexed by the next kLookupBits bits: (length << 8) | symbol for codes
    // that short, 0 for longer ones.
    std::array<std::uint16_t, 1 << kLookupBits> lookup_{};
    // For each length, the largest code (-1 for none) and what to add to a
    // code to find its symbol's index.
    std::array<std::int32_t, 17> maxCode_{};
    std::array<std::int32_t, 17> symbolOffset_{};
    std::array<std::uint8_t, 256> symbols_{};
};

// The entropy-coded data of one scan: bits most significant first, a 0xFF
// byte stuffed with 0x00, ended by a marker. Past the marker (or the end of
// the file) it reads zeros, as a decoder must near the end of a scan whose
// last code is shorter than its look-ahead, and remembers whether any of
// those zeros were actually used.
class BitReader {
public:
    explicit BitReader(ByteSource& source) : source_(source) {}

    // The next `count` bits (1 to 16) as a number.
    int bits(int count)
    {
        if (count_ < count)
            fill();
        const int value = int(buffer_ >> (64 - count));
        consume(count);
        return value;
    }
    // The next code's symbol, or -1 when the bits are no code of the table.
    int decode(const HuffmanTable& table);

    // Whether the scan has used bits it does not have.
    bool overran() const { return count_ < padding_; }

    // Moves past the restart marker that must end an interval; false unless
    // it is there and numbered `number` (0 to 7).
    bool restart(int number);

    // The marker that ended the data, if the reader has met it.
    std::optional<std::uint8_t> takeMarker();

private:
    void fill();
    // False past the end of the data: at a marker or the end of the file.
    bool nextDataByte(std::uint8_t& byte);
    void consume(int count)
    {
        buffer_ <<= count;
        count_ -= count;
    }

    ByteSource& source_;
    std::uint64_t buffer_ = 0; // the next bit is the highest
    int count_ = 0;            // bits in the buffer
    int padding_ = 0;          // of those, zeros made up past the end of the data
    std::optional<std::uint8_t> marker_;
    bool endOfData_ = false;
};

} // namespace quilo::jpeg
