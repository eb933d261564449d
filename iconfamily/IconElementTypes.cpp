#include "iconfamily/IconElementTypes.h"

#include <array>

namespace quilo {
namespace {

using E = ElementEncoding;

constexpr std::array kGeometries{
    ElementGeometry{fourCharCode("is32"), 16, 16, E::Rgb32, fourCharCode("s8mk")},
    ElementGeometry{fourCharCode("il32"), 32, 32, E::Rgb32, fourCharCode("l8mk")},
    ElementGeometry{fourCharCode("ih32"), 48, 48, E::Rgb32, fourCharCode("h8mk")},
    ElementGeometry{fourCharCode("it32"), 128, 128, E::Rgb32, fourCharCode("t8mk")},
    ElementGeometry{fourCharCode("s8mk"), 16, 16, E::Mask8, 0},
    ElementGeometry{fourCharCode("l8mk"), 32, 32, E::Mask8, 0},
    ElementGeometry{fourCharCode("h8mk"), 48, 48, E::Mask8, 0},
    ElementGeometry{fourCharCode("t8mk"), 128, 128, E::Mask8, 0},
    ElementGeometry{fourCharCode("icm8"), 16, 12, E::Palette8, fourCharCode("icm#")},
    ElementGeometry{fourCharCode("ics8"), 16, 16, E::Palette8, fourCharCode("ics#")},
    ElementGeometry{fourCharCode("icl8"), 32, 32, E::Palette8, fourCharCode("ICN#")},
    ElementGeometry{fourCharCode("ich8"), 48, 48, E::Palette8, fourCharCode("ich#")},
    ElementGeometry{fourCharCode("icm4"), 16, 12, E::Palette4, fourCharCode("icm#")},
    ElementGeometry{fourCharCode("ics4"), 16, 16, E::Palette4, fourCharCode("ics#")},
    ElementGeometry{fourCharCode("icl4"), 32, 32, E::Palette4, fourCharCode("ICN#")},
    ElementGeometry{fourCharCode("ich4"), 48, 48, E::Palette4, fourCharCode("ich#")},
    ElementGeometry{fourCharCode("icm#"), 16, 12, E::OneBitPair, 0},
    ElementGeometry{fourCharCode("ics#"), 16, 16, E::OneBitPair, 0},
    ElementGeometry{fourCharCode("ICN#"), 32, 32, E::OneBitPair, 0},
    ElementGeometry{fourCharCode("ich#"), 48, 48, E::OneBitPair, 0},
    ElementGeometry{fourCharCode("ICON"), 32, 32, E::OneBit, 0},
    ElementGeometry{fourCharCode("ic04"), 16, 16, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic05"), 32, 32, E::Embedded, 0},
    ElementGeometry{fourCharCode("icp4"), 16, 16, E::Embedded, 0},
    ElementGeometry{fourCharCode("icp5"), 32, 32, E::Embedded, 0},
    ElementGeometry{fourCharCode("icp6"), 64, 64, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic07"), 128, 128, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic08"), 256, 256, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic09"), 512, 512, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic10"), 1024, 1024, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic11"), 32, 32, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic12"), 64, 64, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic13"), 256, 256, E::Embedded, 0},
    ElementGeometry{fourCharCode("ic14"), 512, 512, E::Embedded, 0},
    ElementGeometry{fourCharCode("icsb"), 18, 18, E::Embedded, 0},
    ElementGeometry{fourCharCode("icsB"), 36, 36, E::Embedded, 0},
    ElementGeometry{fourCharCode("sb24"), 24, 24, E::Embedded, 0},
    ElementGeometry{fourCharCode("SB24"), 48, 48, E::Embedded, 0},
};

} // namespace

const ElementGeometry* elementGeometry(OSType type)
{
    for (const ElementGeometry& geometry : kGeometries)
        if (geometry.type == type)
            return &geometry;
    return nullptr;
}

std::span<const ElementGeometry> elementGeometries()
{
    return kGeometries;
}

int elementDataSize(const ElementGeometry& geometry)
{
    const int pixels = geometry.width * geometry.height;
    switch (geometry.encoding) {
    case E::Rgb32: return pixels * 4;
    case E::Mask8:
    case E::Palette8: return pixels;
    case E::Palette4: return pixels / 2;
    case E::OneBitPair: return pixels / 4;
    case E::OneBit: return pixels / 8;
    case E::Embedded: return 0;
    }
    return 0;
}

} // namespace quilo
