// The whole family on the clipboard as one 'icns' flavour, byte for byte.
// Nothing is reported: a missing flavour reads as an empty family, and a
// clipboard that refuses a put still answers true, so callers ask
// canInitWithScrap before they read.
#include "iconfamily/IconElementTypes.h"
#include "iconfamily/IconFamily.h"
#include "iconfamily/Scrap.h"

#include <algorithm>

namespace quilo {

bool IconFamily::canInitWithScrap()
{
    const std::vector<ScrapFlavorInfo> flavors = currentScrap().flavorInfoList();
    return std::any_of(flavors.begin(), flavors.end(),
                       [](const ScrapFlavorInfo& flavor) { return flavor.flavorType == kIconFamilyType; });
}

IconFamily::IconFamily(WithScrap)
{
    // A missing flavour leaves the block empty.
    if (currentScrap().flavorData(kIconFamilyType, hIconFamily_) != noErr)
        hIconFamily_.clear();
}

std::unique_ptr<IconFamily> IconFamily::iconFamilyWithScrap()
{
    return std::make_unique<IconFamily>(WithScrap{});
}

bool IconFamily::putOnScrap() const
{
    Scrap& scrap = currentScrap();
    scrap.clear();
    scrap.putFlavor(kIconFamilyType, kScrapFlavorMaskNone, hIconFamily_);
    return true;
}

} // namespace quilo
