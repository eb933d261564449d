#include "cli/Command.h"

#include "iconfamily/ElementDecoder.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconFamily.h"

#include <cstdio>

namespace quilo::cli {
namespace {

constexpr const char* kHelp = R"(Usage: quilo info FILE.icns...

Lists each element of the icon families: its type, its size in pixels, how it
is stored and its length in bytes.
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

int run(const Arguments& arguments)
{
    if (arguments.positionals.empty()) {
        std::fprintf(stderr, "quilo info: name at least one .icns file\n");
        return kExitUsage;
    }
    bool allRead = true;
    for (const std::string& path : arguments.positionals)
        allRead = printFamily(path) && allRead;
    return allRead ? kExitSuccess : kExitFailure;
}

} // namespace

const Command& infoCommand()
{
    static const Command command{"info", "list the elements of .icns files", kHelp, {}, &run};
    return command;
}

} // namespace quilo::cli
