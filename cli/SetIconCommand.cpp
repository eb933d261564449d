#include "cli/Command.h"
#include "cli/CustomIconProblems.h"

#include "iconfamily/IconFamily.h"
#include "iconfamily/PictureLoader.h"

#include <cstdio>

namespace quilo::cli {
namespace {

constexpr const char* kHelp = R"(Usage: quilo set-icon PATH ICON [--compatibility]

Gives the file or folder PATH a custom icon, the way a Mac keeps one: in the
resource fork and Finder flags of an AppleDouble sidecar (._NAME) beside it,
which a Mac reading the folder (over a share, from a stick or an archive)
shows in its Finder. A folder's icon goes into the invisible file "Icon\r"
inside it. PATH's own bytes are never changed; a link gives its target the
icon.

ICON is an .icns file, or any picture, whose thumbnails become the icon.

  --compatibility  also store the 32 and 16 pixel icons as the resources
                   Mac OS 9 and earlier read ('icl8', 'ICN#', 'ics8', 'ics#')
)";

std::unique_ptr<IconFamily> familyFrom(const std::string& icon, std::string& error)
{
    if (auto family = IconFamily::iconFamilyWithContentsOfFile(icon))
        return family;
    const PictureLoadResult loaded = imageWithContentsOfFile(icon);
    if (!loaded.image) {
        error = "neither an .icns file nor a picture Quilo can read (" + loaded.error + ")";
        return nullptr;
    }
    return IconFamily::iconFamilyWithThumbnailsOfImage(*loaded.image);
}

int run(const Arguments& arguments)
{
    if (arguments.positionals.size() != 2) {
        std::fprintf(stderr, "quilo set-icon: name the file or folder and the icon\n");
        return kExitUsage;
    }
    const std::filesystem::path path = arguments.positionals[0];
    const std::string& icon = arguments.positionals[1];
    std::string error;
    const auto family = familyFrom(icon, error);
    if (!family) {
        std::fprintf(stderr, "quilo set-icon: %s: %s\n", icon.c_str(), error.c_str());
        return kExitFailure;
    }
    return setCustomIcon("set-icon", *family, path, arguments.flag("compatibility"));
}

} // namespace

const Command& setIconCommand()
{
    static const Command command{"set-icon", "give a file or folder a custom icon", kHelp,
                                 {{}, {"compatibility"}}, &run};
    return command;
}

} // namespace quilo::cli
