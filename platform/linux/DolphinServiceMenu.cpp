// Dolphin: one service menu, a desktop entry with an action per menu item,
// shown for pictures in a "Quilo" submenu. KIO hands %F over as one argument
// per path; the binary's path is quoted by the desktop entry's own rules.
#include "platform/linux/FileManagerActions.h"

namespace quilo::filemanager {
namespace {

namespace fs = std::filesystem;

fs::path serviceMenu(const Setup& setup) { return setup.dataHome / "kio/servicemenus/quilo.desktop"; }

std::string actionGroup(const Setup& setup, const Action& action)
{
    const std::string exec = percentsDoubled(desktopExecQuoted(setup.quilo)) + " request " + action.word + " %F";
    std::string text = "\n[Desktop Action " + std::string(action.word) + "]\n";
    text += "Name=" + std::string(action.label) + "\n";
    text += "Icon=" + std::string(action.icon) + "\n";
    return text + "Exec=" + keyFileEscaped(exec) + "\n";
}

std::string serviceMenuText(const Setup& setup)
{
    std::string text = R"([Desktop Entry]
Type=Service
Name=Quilo
X-KDE-ServiceTypes=KonqPopupMenu/Plugin
MimeType=image/*;
X-KDE-Submenu=Quilo
Actions=)";
    for (const Action& action : actions())
        text += std::string(action.word) + ";";
    text += "\n";
    for (const Action& action : actions())
        text += actionGroup(setup, action);
    return text;
}

// KIO 5.85 and later skip a service menu in the user's folder that is not
// executable, lest a downloaded file run commands.
Result install(const Setup& setup)
{
    Result result;
    writeFile(serviceMenu(setup), serviceMenuText(setup), true, result);
    return result;
}

Result uninstall(const Setup& setup)
{
    Result result;
    removeFile(serviceMenu(setup), result);
    return result;
}

} // namespace

FileManager dolphin() { return {"dolphin", "Dolphin", &install, &uninstall}; }

} // namespace quilo::filemanager
