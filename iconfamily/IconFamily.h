#pragma once

#include "foundation/FourCharCode.h"
#include "iconfamily/BitmapImageRep.h"
#include "iconfamily/IconServices.h"
#include "iconfamily/Image.h"
#include "iconfamily/Resampler.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace quilo {

class ForkEdit;
struct ForkFailure;
struct ResourceFork;

// The ID of every custom-icon resource.
constexpr std::int16_t kCustomIconResource = -16455;

// The invisible file inside a folder that holds the folder's custom icon.
inline std::filesystem::path customIconFileOfFolder(const std::filesystem::path& folder)
{
    return folder / "Icon\r";
}

// One icon family (the data of an .icns file) held in a block of its own.
// Every piece of state lives in the block.
class IconFamily {
public:
    // An empty block: a family with no elements.
    IconFamily();
    // Takes the block over without copying it.
    explicit IconFamily(IconFamilyHandle&& iconFamilyHandle);

    static std::unique_ptr<IconFamily> iconFamily();
    static std::unique_ptr<IconFamily> iconFamilyWithContentsOfFile(const std::filesystem::path& path);
    static std::unique_ptr<IconFamily> iconFamilyWithIconFamilyHandle(IconFamilyHandle&& handle);

    // Thumbnails of the picture at 128, 32 and 16 pixels in all ten elements;
    // the smaller two are drawn from the finished 128 px thumbnail.
    IconFamily(const Image& thumbnailsOfImage, ImageInterpolation usingImageInterpolation);
    static std::unique_ptr<IconFamily> iconFamilyWithThumbnailsOfImage(
        const Image& image, ImageInterpolation usingImageInterpolation = ImageInterpolation::High);

    // The picture fitted (longer side filling the square) and centred in a
    // clear square of iconWidth pixels.
    static Image resampleImage(const Image& image, int toIconWidth, ImageInterpolation usingImageInterpolation);

    // Packs the bitmap into the element of that type, replacing any element of
    // the type. Only the ten element types Quilo writes are accepted.
    bool setIconFamilyElement(OSType elementType, const BitmapImageRep& fromBitmapImageRep);

    // A 32-bit colour element with its mask as straight R, G, B, A; the mask
    // missing, fully opaque. Null for other types or a missing element.
    std::unique_ptr<BitmapImageRep> bitmapImageRepWithAlphaForIconFamilyElement(OSType elementType) const;

    // One representation per picture element of the family, premultiplied.
    std::unique_ptr<Image> imageWithAllReps() const;

    // Writes the block verbatim. Always true: callers cannot learn of a failed
    // write from the result.
    bool writeToFile(const std::filesystem::path& path) const;

    // The custom icon of a file or folder: the family stored as resource
    // 'icns' kCustomIconResource and the kHasCustomIcon Finder flag. A
    // folder keeps its resources in the invisible file "Icon\r" inside it.
    // With compatibility, the old 32 and 16 px resources are added too. Each
    // item's change is written at once or not at all; after a false,
    // `failure` (when given) says what stopped it.
    bool setAsCustomIconForFile(const std::filesystem::path& path, bool withCompatibility = false,
                                ForkFailure* failure = nullptr) const;
    bool setAsCustomIconForDirectory(const std::filesystem::path& path, bool withCompatibility = false,
                                     ForkFailure* failure = nullptr) const;
    // Takes the 'icns' resource off and clears the flags; the compatibility
    // resources stay. There is no counterpart for folders.
    static bool removeCustomIconFromFile(const std::filesystem::path& path, ForkFailure* failure = nullptr);
    // The family of the custom icon the Finder shows for the file or folder;
    // null when it has none.
    static std::unique_ptr<IconFamily> iconFamilyWithIconOfFile(const std::filesystem::path& path);

    // The family on the clipboard, as the one flavour 'icns'. Reading a
    // clipboard without that flavour gives an empty family; putting clears
    // every other flavour first and always answers true.
    struct WithScrap {};
    explicit IconFamily(WithScrap);
    static bool canInitWithScrap();
    static std::unique_ptr<IconFamily> iconFamilyWithScrap();
    bool putOnScrap() const;

    // Copies the element of that type into the fork as a new resource of
    // that type and ID. False, adding nothing, when the family lacks it or
    // the ID is taken.
    bool addResourceType(ResourceFork& fork, OSType type, std::int16_t asResID) const;

    const IconFamilyHandle& iconFamilyHandle() const { return hIconFamily_; }

    // Packing one bitmap into one element's data (the Internals of the
    // family). Null for a bitmap of the wrong size or an unreadable layout.
    using ElementData = std::optional<std::vector<std::uint8_t>>;
    static ElementData get32BitDataFromBitmapImageRep(const BitmapImageRep& bitmap, int requiredPixelSize);
    static ElementData get8BitDataFromBitmapImageRep(const BitmapImageRep& bitmap, int requiredPixelSize);
    static ElementData get8BitMaskFromBitmapImageRep(const BitmapImageRep& bitmap, int requiredPixelSize);
    static ElementData get1BitMaskFromBitmapImageRep(const BitmapImageRep& bitmap, int requiredPixelSize);

private:
    OSErr writeCustomIconResources(ForkEdit& edit, bool withCompatibility) const;

    IconFamilyHandle hIconFamily_;
};

} // namespace quilo
