// Icon families over the desktop's clipboard, as the 'image/x-icns' type, so
// that an icon copied from one file can be pasted onto another here or in
// any program that takes .icns data.
#include "cli/ClipboardOwner.h"
#include "cli/Command.h"
#include "cli/CustomIconProblems.h"

#include "app/QuiloMain.h"
#include "iconfamily/IcnsContainer.h"
#include "iconfamily/IconFamily.h"
#include "platform/linux/DisplayServer.h"

#include <QGuiApplication>

#include <cstdio>

namespace quilo::cli {
namespace {

constexpr const char* kCopyHelp = R"(Usage: quilo copy-icon PATH

Puts an icon family on the clipboard as image/x-icns: the custom icon of the
file or folder PATH, or, when it has none, PATH itself if it is an .icns
file. Everything else on the clipboard goes. As on X11 the clipboard's
content lives in the program that copied it, a quilo process stays behind
to hold the icon until another program takes the clipboard. The exit status
is 1 when PATH has no icon to copy or there is no display.
)";

constexpr const char* kPasteHelp = R"(Usage: quilo paste-icon PATH

Gives the file or folder PATH the icon family on the clipboard (image/x-icns,
as quilo copy-icon puts it) as its custom icon, stored as quilo set-icon
stores one. The exit status is 1, with PATH unchanged, when the clipboard
holds no icon family or there is no display.
)";

bool exists(const char* command, const std::string& path)
{
    std::error_code error;
    if (std::filesystem::exists(path, error))
        return true;
    std::fprintf(stderr, "quilo %s: %s: no such file or folder\n", command, displayPath(path).c_str());
    return false;
}

bool haveDisplay(const char* command)
{
    if (displayAvailable() && displayServerAnswers())
        return true;
    std::fprintf(stderr, "quilo %s: no display that answers, and so no clipboard\n", command);
    return false;
}

int copyIcon(const Arguments& arguments)
{
    if (arguments.positionals.size() != 1) {
        std::fprintf(stderr, "quilo copy-icon: name the one file or folder whose icon to copy\n");
        return kExitUsage;
    }
    const std::string& path = arguments.positionals[0];
    if (!exists("copy-icon", path))
        return kExitFailure;
    auto family = IconFamily::iconFamilyWithIconOfFile(path);
    if (!family)
        family = IconFamily::iconFamilyWithContentsOfFile(path);
    if (!family) {
        std::fprintf(stderr, "quilo copy-icon: %s: has no custom icon and is not an .icns file\n",
                     displayPath(path).c_str());
        return kExitFailure;
    }
    if (!haveDisplay("copy-icon"))
        return kExitFailure;
    std::string error;
    if (!keepOnClipboard(*family, error)) {
        std::fprintf(stderr, "quilo copy-icon: %s\n", error.c_str());
        return kExitFailure;
    }
    return kExitSuccess;
}

// The clipboard's family, or null after saying why there is none to paste.
std::unique_ptr<IconFamily> familyOnClipboard()
{
    if (!IconFamily::canInitWithScrap()) {
        std::fprintf(stderr, "quilo paste-icon: the clipboard holds no icon family (image/x-icns)\n");
        return nullptr;
    }
    auto family = IconFamily::iconFamilyWithScrap();
    const IconFamilyHandle& block = family->iconFamilyHandle();
    if (block.empty() || !parseIconFamily(block)) {
        std::fprintf(stderr, "quilo paste-icon: the icon family on the clipboard is empty or damaged\n");
        return nullptr;
    }
    return family;
}

int pasteIcon(const Arguments& arguments)
{
    if (arguments.positionals.size() != 1) {
        std::fprintf(stderr, "quilo paste-icon: name the one file or folder to give the icon\n");
        return kExitUsage;
    }
    const std::filesystem::path path = arguments.positionals[0];
    if (!exists("paste-icon", path) || !haveDisplay("paste-icon"))
        return kExitFailure;
    static int argc = 1;
    static char name[] = "quilo";
    static char* argv[] = {name, nullptr};
    const QGuiApplication application(argc, argv); // for the clipboard
    const auto family = familyOnClipboard();
    if (!family)
        return kExitFailure;
    return setCustomIcon("paste-icon", *family, path);
}

} // namespace

const Command& copyIconCommand()
{
    static const Command command{"copy-icon", "put a file's custom icon or an .icns file on the clipboard",
                                 kCopyHelp, {}, &copyIcon};
    return command;
}

const Command& pasteIconCommand()
{
    static const Command command{"paste-icon", "give a file or folder the icon on the clipboard", kPasteHelp, {},
                                 &pasteIcon};
    return command;
}

} // namespace quilo::cli
