#pragma once

// What the interoperability tests share: running the peer tools, pictures in
// and out of PNG files, and comparing pictures pixel by pixel.

#include "iconfamily/ElementDecoder.h"
#include "iconfamily/vips/VipsRuntime.h"
#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>
#include <vips/vips8>

namespace quilo::test {

// Pillow is installed for the system's python, which need not be first on PATH.
inline const char* const kSystemPython = "/usr/bin/python3";
inline const std::filesystem::path kInteropDir = QUILO_INTEROP_DIR;
inline const std::filesystem::path kPeersDir = QUILO_PEERS_DIR;

struct Picture {
    int width = 0;
    int height = 0;
    int channels = 4; // 4: straight R G B A; 1: grey
    std::vector<std::uint8_t> pixels;

    std::size_t offset(int x, int y) const
    {
        return (std::size_t(y) * std::size_t(width) + std::size_t(x)) * std::size_t(channels);
    }
    std::uint8_t* at(int x, int y) { return pixels.data() + offset(x, y); }
    const std::uint8_t* at(int x, int y) const { return pixels.data() + offset(x, y); }
};

inline Picture blankPicture(int width, int height, int channels = 4)
{
    return {width, height, channels, std::vector<std::uint8_t>(std::size_t(width * height * channels))};
}

inline Picture pictureOf(const DecodedElement& element)
{
    return {element.width, element.height, element.channels, element.pixels};
}

// A peer that is missing or fails is a test failure, never a skip.
inline ::testing::AssertionResult ran(const std::vector<std::string>& arguments)
{
    const Outcome result = runProgram(arguments);
    if (result.status == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << arguments.front() << " exited with " << result.status << ":\n"
                                         << result.output;
}

inline Picture readPng(const std::filesystem::path& path)
{
    EXPECT_TRUE(ensureVipsStarted());
    const vips::VImage image = vips::VImage::new_from_file(path.c_str());
    Picture picture{image.width(), image.height(), image.bands(), {}};
    std::size_t size = 0;
    void* memory = image.write_to_memory(&size);
    const auto* bytes = static_cast<const std::uint8_t*>(memory);
    picture.pixels.assign(bytes, bytes + size);
    g_free(memory);
    return picture;
}

inline void writePng(const std::filesystem::path& path, const Picture& picture)
{
    ASSERT_TRUE(ensureVipsStarted());
    vips::VImage::new_from_memory(const_cast<std::uint8_t*>(picture.pixels.data()), picture.pixels.size(),
                                  picture.width, picture.height, picture.channels, VIPS_FORMAT_UCHAR)
        .pngsave(path.c_str());
}

// Equal sizes and equal bytes; on a mismatch, how many pixels differ and the first.
inline ::testing::AssertionResult samePixels(const Picture& actual, const Picture& expected)
{
    if (actual.width != expected.width || actual.height != expected.height || actual.channels != expected.channels
        || actual.pixels.size() != expected.pixels.size())
        return ::testing::AssertionFailure() << "got " << actual.width << "x" << actual.height << "x"
                                             << actual.channels << " in " << actual.pixels.size() << " bytes, expected "
                                             << expected.width << "x" << expected.height << "x" << expected.channels;
    int differing = 0;
    std::ostringstream first;
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x) {
            const std::uint8_t* a = actual.at(x, y);
            const std::uint8_t* e = expected.at(x, y);
            if (std::equal(a, a + expected.channels, e))
                continue;
            if (differing++ == 0) {
                first << " first at (" << x << "," << y << "): got";
                for (int c = 0; c < expected.channels; ++c)
                    first << " " << int(a[c]);
                first << ", expected";
                for (int c = 0; c < expected.channels; ++c)
                    first << " " << int(e[c]);
            }
        }
    if (differing == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << differing << " of " << expected.width * expected.height
                                         << " pixels differ;" << first.str();
}

// The alpha of a straight R G B A picture, as a grey one: what a mask element holds.
inline Picture alphaOf(const Picture& picture)
{
    Picture alpha = blankPicture(picture.width, picture.height, 1);
    for (std::size_t i = 0; i < alpha.pixels.size(); ++i)
        alpha.pixels[i] = picture.pixels[4 * i + 3];
    return alpha;
}

} // namespace quilo::test
