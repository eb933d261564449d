#include "app/QuiloMain.h"
#include "cli/Command.h"
#include "foundation/QuiloKeys.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

using quilo::cli::Command;

std::vector<const Command*> commands()
{
    using namespace quilo::cli;
    return {&icnsCommand(), &infoCommand(), &extractCommand(), &setIconCommand(), &removeIconCommand(),
            &getIconCommand(), &copyIconCommand(), &pasteIconCommand(), &createThumbnailsCommand(),
            &restoreThumbnailsCommand(), &saveAsIcnsCommand(), &requestCommand(),
            &installFileManagerActionsCommand(), &uninstallFileManagerActionsCommand()};
}

void printOverview(std::FILE* to)
{
    std::fprintf(to, "Usage: quilo              (the tray application)\n"
                     "       quilo COMMAND [ARGUMENTS]\n"
                     "       quilo --version\n\nCommands:\n");
    for (const Command* command : commands()) {
        // A name too long for the column has its summary on the next line.
        const char* gap = std::strlen(command->name) > 19 ? "\n                      " : " ";
        std::fprintf(to, "  %-19s%s%s\n", command->name, gap, command->summary);
    }
    std::fprintf(to, "\nRun 'quilo COMMAND --help' for a command's arguments.\n");
}

bool wantsHelp(const std::vector<std::string>& words)
{
    for (const std::string& word : words) {
        if (word == "--")
            return false;
        if (word == "--help" || word == "-h")
            return true;
    }
    return false;
}

int runCommand(const Command& command, const std::vector<std::string>& words)
{
    if (wantsHelp(words)) {
        std::fputs(command.help, stdout);
        return quilo::cli::kExitSuccess;
    }
    std::string error;
    const auto arguments = quilo::cli::parseArguments(words, command.accepted, error);
    if (!arguments) {
        std::fprintf(stderr, "quilo %s: %s\nRun 'quilo %s --help' for its arguments.\n", command.name,
                     error.c_str(), command.name);
        return quilo::cli::kExitUsage;
    }
    return command.run(*arguments);
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> words(argv + 1, argv + argc);
    if (words.empty())
        return quilo::quiloApplicationMain(argc, argv);
    if (words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
        printOverview(stdout);
        return quilo::cli::kExitSuccess;
    }
    if (words[0] == "--version") {
        std::printf("Quilo %s\n", quilo::kApplicationVersion);
        return quilo::cli::kExitSuccess;
    }
    for (const Command* command : commands())
        if (words[0] == command->name)
            return runCommand(*command, {words.begin() + 1, words.end()});
    std::fprintf(stderr, "quilo: unknown command '%s'\n\n", words[0].c_str());
    printOverview(stderr);
    return quilo::cli::kExitUsage;
}
