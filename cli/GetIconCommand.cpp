#include "cli/Command.h"

#include "foundation/AtomicFile.h"
#include "iconfamily/IconFamily.h"

#include <cstdio>

namespace quilo::cli {
namespace {

constexpr const char* kHelp = R"(Usage: quilo get-icon PATH OUT.icns

Writes the custom icon of the file or folder PATH out as an .icns file.
The exit status is 1 when PATH has no custom icon or OUT.icns cannot be
written.
)";

int run(const Arguments& arguments)
{
    if (arguments.positionals.size() != 2) {
        std::fprintf(stderr, "quilo get-icon: name the file or folder and the .icns file to write\n");
        return kExitUsage;
    }
    const std::string& path = arguments.positionals[0];
    const std::filesystem::path output = arguments.positionals[1];
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        std::fprintf(stderr, "quilo get-icon: %s: no such file or folder\n", displayPath(path).c_str());
        return kExitFailure;
    }
    const auto family = IconFamily::iconFamilyWithIconOfFile(path);
    if (!family) {
        std::fprintf(stderr, "quilo get-icon: %s: has no custom icon\n", displayPath(path).c_str());
        return kExitFailure;
    }
    if (!writeFileAtomically(output, family->iconFamilyHandle())) {
        std::fprintf(stderr, "quilo get-icon: cannot write %s\n", output.c_str());
        return kExitFailure;
    }
    return kExitSuccess;
}

} // namespace

const Command& getIconCommand()
{
    static const Command command{"get-icon", "write a file's or folder's custom icon out as .icns", kHelp, {}, &run};
    return command;
}

} // namespace quilo::cli
