#pragma once

#include "iconfamily/IconElementTypes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// Stored form of the 32-bit colour elements ('is32', 'il32', 'ih32', 'it32'):
// R, G and B channels run-length packed one after another, as Macs store them;
// 'it32' carries four zero bytes in front. Alpha is not stored.
namespace quilo {

// `argb` holds width x height pixels of A, R, G, B.
std::vector<std::uint8_t> packRgb32Element(const ElementGeometry& geometry,
                                           std::span<const std::uint8_t> argb);

// Plain A, R, G, B (A 255 where it is not stored) from any encoding other writers use: packed with or
// without the 'it32' prefix, or uncompressed ARGB or RGB. nullopt if corrupt.
std::optional<std::vector<std::uint8_t>> unpackRgb32Element(const ElementGeometry& geometry,
                                                            std::span<const std::uint8_t> stored);

} // namespace quilo
