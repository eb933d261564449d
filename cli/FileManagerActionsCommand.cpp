// Quilo's jobs in the file managers' context menus, installed and removed.
#include "cli/Command.h"

#include "platform/linux/FileManagerActions.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <set>
#include <unistd.h>

namespace quilo::cli {
namespace {

namespace fs = std::filesystem;
using filemanager::FileManager;

constexpr const char* kForOption = R"(
  --for LIST  the file managers, comma-separated, or all: nautilus, nemo,
              caja, dolphin, thunar
)";

const std::string kInstallHelp = std::string(R"(Usage: quilo install-file-manager-actions [--for LIST]

Adds "Create Thumbnails", "Restore Thumbnails" and "Save as ICNS Files" to
the file managers' context menus. Each runs this quilo binary, by its
absolute path, on the selected files, in the file manager's order:
  quilo request create-thumbnails|restore-thumbnails|save-as-icns PATH...
so install again after moving Quilo. Without --for, installs for every file
manager whose program is on PATH.
)") + kForOption
    + R"(
What is written, in $XDG_DATA_HOME (~/.local/share) or $XDG_CONFIG_HOME
(~/.config):
  nautilus  DATA/nautilus/scripts/Quilo/, a script per job: a Quilo submenu
            (scripts cannot be limited to pictures)
  caja      CONFIG/caja/scripts/Quilo/, the same
  nemo      DATA/nemo/actions/quilo-*.nemo_action, for pictures
  dolphin   DATA/kio/servicemenus/quilo.desktop, a Quilo submenu for pictures
  thunar    Quilo's actions in CONFIG/Thunar/uca.xml, a Quilo submenu for
            pictures; the user's own actions stay as they are (without a
            uca.xml of the user's, it starts as a copy of the system's)

Installing again replaces Quilo's entries. Every file is replaced whole, never
left half-written; a uca.xml that cannot be read is left alone. A running file
manager may need a restart to show the entries.

Exit status: 0 when everything was written, 1 when something was not or no
file manager was found, 2 for a wrong command line.
)";

const std::string kUninstallHelp = std::string(R"(Usage: quilo uninstall-file-manager-actions [--for LIST]

Removes what install-file-manager-actions writes and nothing else: the
scripts, and their Quilo folders once empty; the Nemo actions; the Dolphin
service menu; Quilo's actions in Thunar's uca.xml, and the file itself when
nothing is left in it that Thunar would not show without it. Without --for,
from every file manager, whether or not its program is still there.
)") + kForOption
    + R"(
Exit status: 0 when nothing of Quilo's is left (nothing installed is fine),
1 when something could not be removed, 2 for a wrong command line.
)";

bool onPath(const std::string& program)
{
    const char* path = std::getenv("PATH");
    const std::string folders = path ? path : "";
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const fs::path candidate = fs::path(folders.substr(start, end - start)) / program;
        std::error_code ignored;
        if (end > start && fs::is_regular_file(candidate, ignored) && ::access(candidate.c_str(), X_OK) == 0)
            return true;
        start = end + 1;
    }
    return false;
}

// The file managers of --for, in the usual order; nullopt after saying what is wrong.
std::optional<std::vector<FileManager>> named(const char* command, const std::string& list)
{
    std::set<std::string> names;
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(',', start), list.size());
        if (end > start)
            names.insert(list.substr(start, end - start));
        start = end + 1;
    }
    const bool all = names.erase("all") > 0;
    std::vector<FileManager> chosen;
    for (const FileManager& manager : filemanager::fileManagers())
        if (names.erase(manager.name) > 0 || all)
            chosen.push_back(manager);
    if (!names.empty() || chosen.empty()) {
        std::fprintf(stderr, "quilo %s: --for takes nautilus, nemo, caja, dolphin, thunar or all, not '%s'\n", command,
                     names.empty() ? list.c_str() : names.begin()->c_str());
        return std::nullopt;
    }
    return chosen;
}

std::string joined(const std::vector<fs::path>& paths)
{
    std::string text;
    for (const fs::path& path : paths)
        text += (text.empty() ? "" : ", ") + displayPath(path);
    return text;
}

// One line per file manager on stdout, what went wrong on stderr.
void report(const char* command, const FileManager& manager, const filemanager::Result& result)
{
    std::string done;
    if (!result.written.empty())
        done = "wrote " + joined(result.written);
    if (!result.removed.empty())
        done += (done.empty() ? "removed " : "; removed ") + joined(result.removed);
    if (done.empty() && result.error.empty())
        done = "nothing to remove";
    if (!done.empty())
        std::printf("%s: %s\n", manager.displayName, done.c_str());
    if (!result.error.empty())
        std::fprintf(stderr, "quilo %s: %s: %s\n", command, manager.displayName, displayPath(result.error).c_str());
}

int runFor(const char* command, const std::vector<FileManager>& managers, bool install, const std::string& quilo)
{
    const filemanager::Setup setup = filemanager::setupFromEnvironment(quilo);
    bool failed = false;
    for (const FileManager& manager : managers) {
        const filemanager::Result result = install ? manager.install(setup) : manager.uninstall(setup);
        report(command, manager, result);
        failed = failed || !result.error.empty();
    }
    std::fflush(stdout);
    return failed ? kExitFailure : kExitSuccess;
}

int install(const Arguments& arguments)
{
    constexpr const char* command = "install-file-manager-actions";
    if (!arguments.positionals.empty()) {
        std::fprintf(stderr, "quilo %s: takes no paths; the file managers go after --for\n", command);
        return kExitUsage;
    }
    std::error_code error;
    const fs::path quilo = fs::read_symlink("/proc/self/exe", error);
    if (error) {
        std::fprintf(stderr, "quilo %s: cannot tell where quilo is: %s\n", command, error.message().c_str());
        return kExitFailure;
    }
    std::vector<FileManager> managers;
    if (const auto list = arguments.option("for")) {
        const auto chosen = named(command, *list);
        if (!chosen)
            return kExitUsage;
        managers = *chosen;
    } else {
        for (const FileManager& manager : filemanager::fileManagers())
            if (onPath(manager.name))
                managers.push_back(manager);
    }
    if (managers.empty()) {
        std::fprintf(stderr,
                     "quilo %s: none of nautilus, nemo, caja, dolphin, thunar is on PATH; name the file managers "
                     "with --for (or --for all)\n",
                     command);
        return kExitFailure;
    }
    return runFor(command, managers, true, quilo);
}

int uninstall(const Arguments& arguments)
{
    constexpr const char* command = "uninstall-file-manager-actions";
    if (!arguments.positionals.empty()) {
        std::fprintf(stderr, "quilo %s: takes no paths; the file managers go after --for\n", command);
        return kExitUsage;
    }
    const auto chosen = named(command, arguments.option("for").value_or("all"));
    return chosen ? runFor(command, *chosen, false, {}) : kExitUsage;
}

} // namespace

const Command& installFileManagerActionsCommand()
{
    static const Command command{"install-file-manager-actions",
                                 "add Quilo's jobs to the file managers' menus",
                                 kInstallHelp.c_str(),
                                 {{"for"}, {}},
                                 &install};
    return command;
}

const Command& uninstallFileManagerActionsCommand()
{
    static const Command command{"uninstall-file-manager-actions",
                                 "take them out of the file managers' menus",
                                 kUninstallHelp.c_str(),
                                 {{"for"}, {}},
                                 &uninstall};
    return command;
}

} // namespace quilo::cli
