#pragma once

// A folder given custom icons by the quilo command, and plain readers of the
// AppleDouble sidecars and resource forks it wrote. The readers walk the
// bytes by hand, apart from the engine's codecs, so the peers are compared
// with the bytes on disk and not with our own reading of them.

#include "Interop.h"
#include "iconfamily/AppleDouble.h"
#include "tests/support/Files.h"

#include <cstdio>
#include <optional>
#include <span>

namespace quilo::test {

inline const std::filesystem::path kSamplesDir = QUILO_SAMPLES_DIR;

// Whether the peer's program is on PATH: the one case a peer test skips.
inline bool installed(const std::string& program)
{
    return runProgram({"sh", "-c", "command -v \"$0\"", program}).status == 0;
}

// Zero past the end, so a damaged file fails a comparison instead of the run.
inline std::uint32_t bigEndian(std::span<const std::uint8_t> bytes, std::size_t offset, int width)
{
    if (offset + std::size_t(width) > bytes.size())
        return 0;
    std::uint32_t value = 0;
    for (int i = 0; i < width; ++i)
        value = value << 8 | bytes[offset + std::size_t(i)];
    return value;
}

// The entry's bytes, or nullopt when the file has no such entry or is cut short.
inline std::optional<std::vector<std::uint8_t>> appleDoubleEntry(std::span<const std::uint8_t> file, std::uint32_t id)
{
    if (file.size() < 26)
        return std::nullopt;
    const std::size_t count = bigEndian(file, 24, 2);
    for (std::size_t i = 0; i < count && 26 + 12 * (i + 1) <= file.size(); ++i) {
        const std::size_t descriptor = 26 + 12 * i;
        const std::size_t offset = bigEndian(file, descriptor + 4, 4), length = bigEndian(file, descriptor + 8, 4);
        if (bigEndian(file, descriptor, 4) == id && offset + length <= file.size())
            return std::vector<std::uint8_t>(file.begin() + std::ptrdiff_t(offset),
                                             file.begin() + std::ptrdiff_t(offset + length));
    }
    return std::nullopt;
}

struct Sidecar {
    std::vector<std::uint8_t> finderInfo; // the 32 bytes, without macOS's attribute area after them
    std::vector<std::uint8_t> fork;

    std::uint16_t finderFlags() const { return std::uint16_t(bigEndian(finderInfo, 8, 2)); }
};

inline Sidecar readSidecar(const std::filesystem::path& path)
{
    const std::vector<std::uint8_t> file = readFileBytes(path);
    Sidecar sidecar;
    const auto finderInfo = appleDoubleEntry(file, kAppleDoubleFinderInfo);
    const auto fork = appleDoubleEntry(file, kAppleDoubleResourceFork);
    EXPECT_TRUE(finderInfo && finderInfo->size() >= 32 && fork) << path << " is no sidecar with Finder info and a fork";
    if (finderInfo && finderInfo->size() >= 32)
        sidecar.finderInfo.assign(finderInfo->begin(), finderInfo->begin() + 32);
    if (fork)
        sidecar.fork = *fork;
    return sidecar;
}

struct ForkResource {
    OSType type = 0;
    std::int16_t id = 0;
    std::size_t offset = 0; // of the data's length word, from the start of the fork
    std::vector<std::uint8_t> data;
};

// Every resource in the fork, in map order, up to the first whose data runs
// past the end. The engine's own reader is tested elsewhere.
inline std::vector<ForkResource> forkResources(std::span<const std::uint8_t> fork)
{
    std::vector<ForkResource> resources;
    if (fork.size() < 16)
        return resources;
    const std::size_t dataStart = bigEndian(fork, 0, 4), map = bigEndian(fork, 4, 4);
    const std::size_t typeList = map + bigEndian(fork, map + 24, 2);
    const std::size_t types = std::uint16_t(bigEndian(fork, typeList, 2) + 1); // 0xFFFF: none
    for (std::size_t t = 0; t < types; ++t) {
        const std::size_t entry = typeList + 2 + 8 * t;
        const std::size_t count = bigEndian(fork, entry + 4, 2) + 1;
        for (std::size_t r = 0; r < count; ++r) {
            const std::size_t reference = typeList + bigEndian(fork, entry + 6, 2) + 12 * r;
            ForkResource resource;
            resource.type = bigEndian(fork, entry, 4);
            resource.id = std::int16_t(bigEndian(fork, reference, 2));
            resource.offset = dataStart + bigEndian(fork, reference + 5, 3);
            const std::size_t length = bigEndian(fork, resource.offset, 4);
            if (resource.offset + 4 + length > fork.size())
                return resources;
            resource.data.assign(fork.begin() + std::ptrdiff_t(resource.offset + 4),
                                 fork.begin() + std::ptrdiff_t(resource.offset + 4 + length));
            resources.push_back(std::move(resource));
        }
    }
    return resources;
}

inline std::string hexBytes(std::span<const std::uint8_t> bytes, const char* separator = " ")
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", bytes[i]);
        text += (i ? separator : "") + std::string(digits);
    }
    return text;
}

// In `root`: photo.jpg, a photo from a Mac whose sidecar gave it a type and
// creator, and folder/ holding a photo of its own; quilo set-icon
// --compatibility gives both a custom icon, each from another picture, so an
// icon that turns up in the wrong place shows.
struct CustomIconTree {
    std::filesystem::path root;
    std::filesystem::path photo = root / "photo.jpg";
    std::filesystem::path folder = root / "folder";
    std::filesystem::path iconFile = folder / "Icon\r";

    static std::filesystem::path sidecarOf(const std::filesystem::path& item)
    {
        return item.parent_path() / ("._" + item.filename().string());
    }

    explicit CustomIconTree(std::filesystem::path where) : root(std::move(where))
    {
        std::filesystem::create_directories(folder);
        std::filesystem::copy_file(kSamplesDir / "hills.jpg", photo);
        std::filesystem::copy_file(kSamplesDir / "hills.jpg", folder / "inside.jpg");
        AppleDouble fromMac;
        FinderInfo info;
        info.setFileType(fourCharCode("JPEG"));
        info.setCreator(fourCharCode("8BIM"));
        fromMac.setFinderInfo(info);
        writeFileBytes(sidecarOf(photo), fromMac.serialise().value());
        EXPECT_TRUE(ran({QUILO_CLI, "set-icon", photo.string(), (kSamplesDir / "hills.jpg").string(), "--compatibility"}));
        EXPECT_TRUE(
            ran({QUILO_CLI, "set-icon", folder.string(), (kSamplesDir / "lighthouse.png").string(), "--compatibility"}));
    }
};

} // namespace quilo::test
