#include "cli/Command.h"
#include "cli/CustomIconProblems.h"

#include "iconfamily/ForkStore.h"
#include "iconfamily/IconFamily.h"

#include <cstdio>

namespace quilo::cli {
namespace {

constexpr const char* kHelp = R"(Usage: quilo remove-icon PATH...

Takes the custom icon off each file: the 'icns' resource goes and the Finder
flags say there is none. Resources stored for old Mac OS versions stay. A
folder's custom icon is not removed this way (delete the file "Icon\r" inside
it to take it off).

The exit status is 0 when every file had its icon removed, 1 otherwise.
)";

std::string whyNotRemoved(const ForkFailure& failure)
{
    if (failure.error == resFNotFound)
        return "has no resource fork, so no custom icon to remove";
    return explainCustomIconFailure(failure);
}

int run(const Arguments& arguments)
{
    if (arguments.positionals.empty()) {
        std::fprintf(stderr, "quilo remove-icon: name at least one file\n");
        return kExitUsage;
    }
    bool allRemoved = true;
    for (const std::string& path : arguments.positionals) {
        std::error_code error;
        ForkFailure failure;
        if (std::filesystem::is_directory(path, error))
            std::fprintf(stderr, "quilo remove-icon: %s: is a folder; only a file's custom icon can be removed\n",
                         displayPath(path).c_str());
        else if (IconFamily::removeCustomIconFromFile(path, &failure))
            continue;
        else
            std::fprintf(stderr, "quilo remove-icon: %s: %s\n", displayPath(path).c_str(),
                         displayPath(whyNotRemoved(failure)).c_str());
        allRemoved = false;
    }
    return allRemoved ? kExitSuccess : kExitFailure;
}

} // namespace

const Command& removeIconCommand()
{
    static const Command command{"remove-icon", "take the custom icon off files", kHelp, {}, &run};
    return command;
}

} // namespace quilo::cli
