#pragma once

#include "foundation/FourCharCode.h"
#include "iconfamily/IconServices.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// The system clipboard as typed byte strings ("flavours"), each named by a
// four-character code. The engine only ever sees this interface; the
// platform gives the clipboard behind it.
namespace quilo {

using ScrapFlavorType = OSType;
using ScrapFlavorFlags = std::uint32_t;

constexpr ScrapFlavorFlags kScrapFlavorMaskNone = 0;
constexpr OSErr noTypeErr = -102; // the clipboard holds no flavour of that type

struct ScrapFlavorInfo {
    ScrapFlavorType flavorType = 0;
    ScrapFlavorFlags flavorFlags = kScrapFlavorMaskNone;
};

class Scrap {
public:
    virtual ~Scrap() = default;

    // Empties the clipboard; flavours put afterwards are all it holds.
    virtual OSErr clear() = 0;
    // Every flavour the clipboard holds now, each type once.
    virtual std::vector<ScrapFlavorInfo> flavorInfoList() = 0;
    // The flavour's bytes; noTypeErr, leaving `data` alone, when it is missing.
    // No separate size query: a clipboard owned by another program hands its
    // content over whole, so asking the size first would move it twice.
    virtual OSErr flavorData(ScrapFlavorType flavorType, std::vector<std::uint8_t>& data) = 0;
    // Adds the flavour to what was put since the last clear, replacing one of
    // the same type.
    virtual OSErr putFlavor(ScrapFlavorType flavorType, ScrapFlavorFlags flavorFlags,
                            std::span<const std::uint8_t> data) = 0;
};

// The clipboard every scrap operation uses: the platform's, unless a test put
// another in its place.
Scrap& currentScrap();
// The platform's own. Its definition lives in a platform library with the
// desktop toolkit, which only programs that use the clipboard link.
Scrap& platformScrap();
// Puts another clipboard in its place, or the platform's back (null).
void replaceScrap(Scrap* scrap);

} // namespace quilo
