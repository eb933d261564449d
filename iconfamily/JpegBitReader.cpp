#include "iconfamily/JpegBitReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace quilo::jpeg {
namespace {

// Large enough that reading costs no more than the system call, small
// enough to be nothing beside the picture.
constexpr std::size_t kChunkSize = 64 * 1024;

constexpr std::uint8_t kFirstRestart = 0xD0;

} // namespace

ByteSource::ByteSource(std::span<const std::uint8_t> bytes)
    : at_(bytes.data())
    , end_(bytes.data() + bytes.size())
{
}

ByteSource::ByteSource(std::FILE* file)
    : file_(file)
    , chunk_(kChunkSize)
{
}

bool ByteSource::refill()
{
    if (!file_)
        return false;
    const std::size_t got = std::fread(chunk_.data(), 1, chunk_.size(), file_);
    at_ = chunk_.data();
    end_ = at_ + got;
    return got > 0;
}

bool ByteSource::read(std::span<std::uint8_t> out)
{
    std::size_t done = 0;
    while (done < out.size()) {
        if (at_ == end_ && !refill())
            return false;
        const std::size_t part = std::min(out.size() - done, std::size_t(end_ - at_));
        std::memcpy(out.data() + done, at_, part);
        at_ += part;
        done += part;
    }
    return true;
}

bool ByteSource::skip(std::size_t count)
{
    while (count > 0) {
        if (at_ == end_ && !refill())
            return false;
        const std::size_t part = std::min(count, std::size_t(end_ - at_));
        at_ += part;
        count -= part;
    }
    return true;
}

std::optional<std::uint8_t> ByteSource::nextMarker()
{
    for (;;) {
        // Most of what is skipped is scan data: look for 0xFF a chunk at a time.
        for (;;) {
            if (at_ == end_ && !refill())
                return std::nullopt;
            const auto* found = static_cast<const std::uint8_t*>(std::memchr(at_, 0xFF, std::size_t(end_ - at_)));
            at_ = found ? found + 1 : end_;
            if (found)
                break;
        }
        std::uint8_t code = 0xFF;
        while (code == 0xFF) // fill bytes may pad a marker
            if (!next(code))
                return std::nullopt;
        if (code != 0) // 0xFF 0x00 is a stuffed data byte
            return code;
    }
}

std::optional<HuffmanTable> HuffmanTable::build(std::span<const std::uint8_t, 16> counts,
                                                std::span<const std::uint8_t> symbols)
{
    HuffmanTable table;
    std::size_t total = 0;
    for (const std::uint8_t count : counts)
        total += count;
    if (total > table.symbols_.size() || total != symbols.size())
        return std::nullopt;
    std::copy(symbols.begin(), symbols.end(), table.symbols_.begin());

    std::int32_t code = 0;
    std::int32_t index = 0;
    for (int length = 1; length <= 16; ++length) {
        const int count = counts[std::size_t(length - 1)];
        table.symbolOffset_[std::size_t(length)] = index - code;
        for (int i = 0; i < count; ++i, ++code, ++index) {
            // The codes of a length must fit in it, short of the all-ones
            // code, which is reserved.
            if (code >= (std::int32_t(1) << length) - 1)
                return std::nullopt;
            if (length > kLookupBits)
                continue;
            const int spare = kLookupBits - length;
            const auto entry = std::uint16_t(length << 8 | table.symbols_[std::size_t(index)]);
            std::fill_n(table.lookup_.begin() + (code << spare), 1 << spare, entry);
        }
        table.maxCode_[std::size_t(length)] = count > 0 ? code - 1 : -1;
        code <<= 1;
    }
    return table;
}

int BitReader::decode(const HuffmanTable& table)
{
    if (count_ < 16)
        fill();
    const std::uint16_t entry = table.lookup_[std::size_t(buffer_ >> (64 - HuffmanTable::kLookupBits))];
    if (entry != 0) {
        consume(entry >> 8);
        return entry & 0xFF;
    }
    for (int length = HuffmanTable::kLookupBits + 1; length <= 16; ++length) {
        const auto code = std::int32_t(buffer_ >> (64 - length));
        if (code <= table.maxCode_[std::size_t(length)]) {
            consume(length);
            return table.symbols_[std::size_t(code + table.symbolOffset_[std::size_t(length)])];
        }
    }
    return -1;
}

bool BitReader::nextDataByte(std::uint8_t& byte)
{
    if (marker_ || endOfData_)
        return false;
    if (!source_.next(byte)) {
        endOfData_ = true;
        return false;
    }
    if (byte != 0xFF)
        return true;
    std::uint8_t after = 0xFF;
    while (after == 0xFF) // fill bytes may pad a marker
        if (!source_.next(after)) {
            endOfData_ = true;
            return false;
        }
    if (after == 0) // stuffed
        return true;
    marker_ = after;
    return false;
}

void BitReader::fill()
{
    while (count_ <= 56) {
        std::uint8_t byte = 0;
        if (!nextDataByte(byte)) {
            byte = 0;
            padding_ += 8;
        }
        buffer_ |= std::uint64_t(byte) << (56 - count_);
        count_ += 8;
    }
}

bool BitReader::restart(int number)
{
    // What is left of the interval's last byte is padding.
    buffer_ = 0;
    count_ = 0;
    padding_ = 0;
    if (!marker_ && !endOfData_)
        marker_ = source_.nextMarker();
    const bool found = marker_ == kFirstRestart + number;
    marker_.reset();
    return found;
}

std::optional<std::uint8_t> BitReader::takeMarker()
{
    buffer_ = 0;
    count_ = 0;
    padding_ = 0;
    return std::exchange(marker_, std::nullopt);
}

} // namespace quilo::jpeg
