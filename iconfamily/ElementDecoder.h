#pragma once

#include "foundation/FourCharCode.h"
#include "iconfamily/BitmapImageRep.h"
#include "iconfamily/IcnsContainer.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Turns the elements of a family into pixels, whatever tool wrote them.
namespace quilo {

struct DecodedElement {
    OSType type = 0;
    int width = 0;
    int height = 0;
    int channels = 4;                 // 4: straight R G B A; 1: a mask's opacity
    std::vector<std::uint8_t> pixels; // rows top first, no padding
    std::string encoding;             // how the element was stored, for people
};

enum class DecodeMasks { No, Yes };

// Every element that holds a picture (and with DecodeMasks::Yes every mask),
// in the family's order, colour elements with their masks applied. Elements
// that are corrupt or hold no picture are left out.
std::vector<DecodedElement> decodeElements(std::span<const std::uint8_t> family, DecodeMasks masks);

// One element of a parsed family; nullopt if it holds no picture or mask, or
// is corrupt.
std::optional<DecodedElement> decodeElement(std::span<const std::uint8_t> block,
                                            const std::vector<IcnsElement>& elements, const IcnsElement& element);

// The element's pixels premultiplied, as an 8-bit R G B A bitmap.
BitmapImageRep premultipliedBitmap(const DecodedElement& element);

} // namespace quilo
