// Nautilus and Caja: an executable in the user's scripts folder is a menu
// item named after the file, and a folder of them a submenu. They cannot be
// limited to pictures; quilo refuses anything else.
#include "platform/linux/FileManagerActions.h"

namespace quilo::filemanager {
namespace {

namespace fs = std::filesystem;

// The file manager runs the script in the folder shown, with the selected
// files as arguments, named relative to it. A request may be handed to a
// running Quilo with another working folder, so the script makes them
// absolute, which also keeps a name like "--x" from reading as an option.
std::string script(const Setup& setup, const Action& action, const char* fileManager)
{
    std::string text = "#!/bin/sh\n";
    text += "# Quilo's \"" + std::string(action.label) + "\" for the files selected in " + fileManager + ".\n";
    text += R"(for name do
    case $name in
    /*) set -- "$@" "$name" ;;
    *) set -- "$@" "$PWD/$name" ;;
    esac
    shift
done
)";
    return text + "exec " + shellQuoted(setup.quilo) + " request " + action.word + " \"$@\"\n";
}

Result installScripts(const fs::path& folder, const Setup& setup, const char* fileManager)
{
    Result result;
    for (const Action& action : actions())
        if (!writeFile(folder / action.label, script(setup, action, fileManager), true, result))
            break;
    return result;
}

Result uninstallScripts(const fs::path& folder)
{
    Result result;
    for (const Action& action : actions())
        if (!removeFile(folder / action.label, result))
            return result;
    removeFolderIfEmpty(folder);
    return result;
}

fs::path nautilusFolder(const Setup& setup) { return setup.dataHome / "nautilus/scripts/Quilo"; }
fs::path cajaFolder(const Setup& setup) { return setup.configHome / "caja/scripts/Quilo"; }

} // namespace

FileManager nautilus()
{
    return {"nautilus", "Nautilus",
            [](const Setup& setup) { return installScripts(nautilusFolder(setup), setup, "Nautilus"); },
            [](const Setup& setup) { return uninstallScripts(nautilusFolder(setup)); }};
}

FileManager caja()
{
    return {"caja", "Caja", [](const Setup& setup) { return installScripts(cajaFolder(setup), setup, "Caja"); },
            [](const Setup& setup) { return uninstallScripts(cajaFolder(setup)); }};
}

} // namespace quilo::filemanager
