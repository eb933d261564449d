#include "cli/Command.h"

#include "cli/PngFile.h"
#include "iconfamily/ElementDecoder.h"
#include "iconfamily/IconFamily.h"

#include <cstdio>
#include <map>
#include <system_error>

namespace quilo::cli {
namespace {

constexpr const char* kHelp = R"(Usage: quilo extract FILE.icns --output DIR

Writes one PNG per element of the icon family into DIR, named after the
element type (it32.png, ICN#.png, ...). Colour elements have their masks
applied as alpha; masks are written as grey pictures of their own.
)";

// Element types are four bytes from the file: keep them safe as file names.
std::string fileStem(OSType type, std::map<std::string, int>& seen)
{
    std::string stem = fourCharCodeString(type);
    for (char& c : stem)
        if (c == '/' || c == ' ')
            c = '_';
    const int count = ++seen[stem];
    return count == 1 ? stem : stem + "-" + std::to_string(count);
}

int run(const Arguments& arguments)
{
    const auto output = arguments.option("output");
    if (arguments.positionals.size() != 1 || !output) {
        std::fprintf(stderr, "quilo extract: name one .icns file and --output DIR\n");
        return kExitUsage;
    }
    const std::string& path = arguments.positionals[0];
    const auto family = IconFamily::iconFamilyWithContentsOfFile(path);
    if (!family) {
        std::fprintf(stderr, "quilo extract: %s: not a readable .icns file\n", path.c_str());
        return kExitFailure;
    }
    if (!makeOutputDirectory("extract", *output))
        return kExitFailure;
    std::map<std::string, int> seen;
    bool allWritten = true;
    for (const DecodedElement& element : decodeElements(family->iconFamilyHandle(), DecodeMasks::Yes)) {
        const auto target = std::filesystem::path(*output) / (fileStem(element.type, seen) + ".png");
        if (writePng(target, element)) {
            std::printf("%s\n", target.c_str());
        } else {
            std::fprintf(stderr, "quilo extract: cannot write %s\n", target.c_str());
            allWritten = false;
        }
    }
    return allWritten ? kExitSuccess : kExitFailure;
}

} // namespace

const Command& extractCommand()
{
    static const Command command{"extract", "write each element of an .icns file as a PNG", kHelp,
                                 {{"output"}, {}}, &run};
    return command;
}

} // namespace quilo::cli
