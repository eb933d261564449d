#pragma once

// A folder given custom icons by the quilo command, and what its sidecars
// hold as the engine's codecs read them: the peers must agree with that.

#include "Interop.h"
#include "iconfamily/AppleDouble.h"
#include "iconfamily/ResourceFork.h"
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

// Zero past the end, so a damaged stream fails a comparison instead of the run.
inline std::uint32_t bigEndian(std::span<const std::uint8_t> bytes, std::size_t offset, int width)
{
    if (offset + std::size_t(width) > bytes.size())
        return 0;
    std::uint32_t value = 0;
    for (int i = 0; i < width; ++i)
        value = value << 8 | bytes[offset + std::size_t(i)];
    return value;
}

struct Sidecar {
    std::vector<std::uint8_t> finderInfo; // the 32 bytes, without macOS's attribute area after them
    std::vector<std::uint8_t> fork;

    std::uint16_t finderFlags() const { return std::uint16_t(bigEndian(finderInfo, 8, 2)); }
};

// The Finder info and fork of an AppleDouble file, ours or a peer's.
inline Sidecar sidecarFromBytes(std::span<const std::uint8_t> bytes)
{
    const auto parsed = AppleDouble::parse(bytes);
    const auto fork = parsed ? parsed->resourceFork() : std::nullopt;
    EXPECT_TRUE(fork) << "no AppleDouble file with a fork";
    Sidecar sidecar;
    if (!parsed)
        return sidecar;
    const FinderInfo info = parsed->finderInfo();
    sidecar.finderInfo.assign(info.bytes.begin(), info.bytes.end());
    if (fork)
        sidecar.fork.assign(fork->begin(), fork->end());
    return sidecar;
}

inline Sidecar readSidecar(const std::filesystem::path& path)
{
    SCOPED_TRACE(path.string());
    return sidecarFromBytes(readFileBytes(path));
}

struct ForkResource {
    OSType type = 0;
    std::int16_t id = 0;
    std::size_t offset = 0; // of the data's length word, from the start of the fork
    std::vector<std::uint8_t> data;
};

// Every resource in the fork, in map order, with where our writer puts its
// data: from 256 on, in map order, each after its length word.
inline std::vector<ForkResource> forkResources(std::span<const std::uint8_t> fork)
{
    std::vector<ForkResource> resources;
    const auto parsed = parseResourceFork(fork);
    EXPECT_TRUE(parsed || fork.empty()) << "an unreadable fork";
    std::size_t offset = kResourceDataStart;
    for (const Resource& resource : parsed ? parsed->resources : std::vector<Resource>{}) {
        resources.push_back({resource.type, resource.id, offset, resource.data});
        offset += 4 + resource.data.size();
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
