#pragma once

#include <cstdint>
#include <span>

namespace quilo {

// The orientation tag (1 to 8) of an EXIF block as stored in a JPEG APP1
// segment ("Exif\0\0" and a TIFF structure); 1 (upright) when the block has
// none or is malformed. The bytes are untrusted: every offset is checked.
int exifOrientation(std::span<const std::uint8_t> app1);

// Whether an APP1 segment holds EXIF (rather than XMP, say).
bool isExifBlock(std::span<const std::uint8_t> app1);

} // namespace quilo
