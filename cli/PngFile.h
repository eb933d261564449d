#pragma once

#include "iconfamily/ElementDecoder.h"

#include <filesystem>

namespace quilo::cli {

// Writes the element's pixels as a PNG (grey for a mask, RGBA otherwise),
// replacing whatever is at the path (a link too) rather than writing into it.
bool writePng(const std::filesystem::path& path, const DecodedElement& element);

} // namespace quilo::cli
