#include "cli/Command.h"
#include "cli/CustomIconReport.h"

#include "iconfamily/ElementDecoder.h"
#include "iconfamily/ForkStore.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconFamily.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace quilo::cli {
namespace {

constexpr const char* kHelp = R"(Usage: quilo info PATH...

For an .icns file, lists each element of its icon family: its type, its size
in pixels, how it is stored and its length in bytes.

For any other file or folder, tells whether it has a custom icon and shows
what a Mac would read of it: the Finder info (type, creator, Finder flags)
and the resources of its fork (type, ID, size); for a folder, also those of
the icon file "Icon\r" inside it. An .icns file that has a custom icon of
its own gets both.
)";

void printElement(std::span<const std::uint8_t> block, const std::vector<IcnsElement>& elements,
                  const IcnsElement& element)
{
    const std::string type = fourCharCodeString(element.type);
    const auto decoded = decodeElement(block, elements, element);
    if (decoded)
        std::printf("  %-10s %4d x %-4d  %-26s %zu bytes\n", type.c_str(), decoded->width, decoded->height,
                    decoded->encoding.c_str(), element.dataSize);
    else
        std::printf("  %-10s %-11s  %-26s %zu bytes\n", type.c_str(), "-", "no picture, or unreadable",
                    element.dataSize);
}

bool printFamily(const std::string& path)
{
    const auto family = IconFamily::iconFamilyWithContentsOfFile(path);
    if (!family) {
        std::fprintf(stderr, "quilo info: %s: not a readable .icns file\n", path.c_str());
        return false;
    }
    const IconFamilyHandle& block = family->iconFamilyHandle();
    const auto elements = parseIconFamily(block);
    std::printf("%s: %zu bytes, %zu elements\n", path.c_str(), block.size(), elements->size());
    for (const IcnsElement& element : *elements)
        printElement(block, *elements, element);
    return true;
}

bool isIcnsName(const std::filesystem::path& path)
{
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    return extension == ".icns";
}

bool printInfo(const std::string& path)
{
    if (!isIcnsName(path))
        return printCustomIconState(path);
    if (!printFamily(path))
        return false;
    std::error_code error;
    const auto target = std::filesystem::canonical(path, error);
    return error || !forkStore().holdsAnything(target) || printCustomIconState(path);
}

int run(const Arguments& arguments)
{
    if (arguments.positionals.empty()) {
        std::fprintf(stderr, "quilo info: name at least one file or folder\n");
        return kExitUsage;
    }
    bool allRead = true;
    for (const std::string& path : arguments.positionals)
        allRead = printInfo(path) && allRead;
    return allRead ? kExitSuccess : kExitFailure;
}

} // namespace

const Command& infoCommand()
{
    static const Command command{"info", "list the elements of .icns files, or show a file's custom icon", kHelp, {},
                                 &run};
    return command;
}

} // namespace quilo::cli
