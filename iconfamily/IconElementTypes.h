#pragma once

#include "foundation/FourCharCode.h"

#include <span>

namespace quilo {

constexpr OSType kIconFamilyType = fourCharCode("icns");
constexpr OSType kSystemIconsCreator = fourCharCode("macs");

// The ten elements Quilo writes.
constexpr OSType kThumbnail32BitData = fourCharCode("it32");
constexpr OSType kThumbnail8BitMask = fourCharCode("t8mk");
constexpr OSType kLarge32BitData = fourCharCode("il32");
constexpr OSType kLarge8BitMask = fourCharCode("l8mk");
constexpr OSType kLarge8BitData = fourCharCode("icl8");
constexpr OSType kLarge1BitMask = fourCharCode("ICN#");
constexpr OSType kSmall32BitData = fourCharCode("is32");
constexpr OSType kSmall8BitMask = fourCharCode("s8mk");
constexpr OSType kSmall8BitData = fourCharCode("ics8");
constexpr OSType kSmall1BitMask = fourCharCode("ics#");

// How an element's data is laid out, for every element type we can read.
enum class ElementEncoding {
    Rgb32,      // A R G B on the interface; run-length packed channels when stored
    Mask8,      // one opacity byte a pixel
    Palette8,   // one index into the 256-colour system palette a pixel
    Palette4,   // two indices into the 16-colour system palette a byte
    OneBitPair, // 1-bit image plane, then 1-bit mask plane
    OneBit,     // 1-bit image plane alone ('ICON')
    Embedded,   // PNG, JPEG 2000, or 'ARGB' run-length data
};

struct ElementGeometry {
    OSType type;
    int width;
    int height;
    ElementEncoding encoding;
    OSType maskType; // the element that gives this one its opacity, or 0
};

// nullptr for types that hold no picture of their own ('TOC ', 'icnV', ...).
const ElementGeometry* elementGeometry(OSType type);

// Every element type we can read.
std::span<const ElementGeometry> elementGeometries();

// Bytes of an element of a fixed-size encoding; 0 for Embedded.
int elementDataSize(const ElementGeometry& geometry);

} // namespace quilo
