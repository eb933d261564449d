// Nemo: one key file per menu item in the user's actions folder, shown for
// pictures only. Nemo puts the selection in place of %F, each path quoted for
// the shell, and splits the line as the shell would.
#include "platform/linux/FileManagerActions.h"

namespace quilo::filemanager {
namespace {

namespace fs = std::filesystem;

fs::path actionFile(const Setup& setup, const Action& action)
{
    return setup.dataHome / "nemo/actions" / (std::string("quilo-") + action.word + ".nemo_action");
}

std::string actionText(const Setup& setup, const Action& action)
{
    const std::string exec = percentsDoubled(shellQuoted(setup.quilo)) + " request " + action.word + " %F";
    std::string text = "[Nemo Action]\n";
    text += "Name=" + std::string(action.label) + "\n";
    text += "Comment=" + std::string(action.description) + "\n";
    text += "Exec=" + keyFileEscaped(exec) + "\n";
    text += "Icon-Name=" + std::string(action.icon) + "\n";
    return text + "Selection=notnone\nMimetypes=image/*;\n";
}

Result install(const Setup& setup)
{
    Result result;
    for (const Action& action : actions())
        if (!writeFile(actionFile(setup, action), actionText(setup, action), false, result))
            break;
    return result;
}

Result uninstall(const Setup& setup)
{
    Result result;
    for (const Action& action : actions())
        if (!removeFile(actionFile(setup, action), result))
            break;
    return result;
}

} // namespace

FileManager nemo() { return {"nemo", "Nemo", &install, &uninstall}; }

} // namespace quilo::filemanager
