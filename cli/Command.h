#pragma once

#include "cli/Arguments.h"

#include <string>

namespace quilo::cli {

// Exit statuses of every command.
constexpr int kExitSuccess = 0;
constexpr int kExitFailure = 1; // the work failed, wholly or in part
constexpr int kExitUsage = 2;   // the command line was wrong

struct Command {
    const char* name;
    const char* summary; // one line for `quilo --help`
    const char* help;    // the whole text for `quilo NAME --help`
    AcceptedArguments accepted;
    int (*run)(const Arguments& arguments);
};

// The path as it can be shown on a terminal: control characters (the
// carriage return ending "Icon\r", for one) written as escapes.
std::string displayPath(const std::string& path);

// Makes the folder a command writes into (and its parents); says why not on
// stderr when it cannot.
bool makeOutputDirectory(const char* command, const std::string& directory);

const Command& infoCommand();
const Command& extractCommand();
const Command& icnsCommand();
const Command& setIconCommand();
const Command& removeIconCommand();
const Command& getIconCommand();
const Command& copyIconCommand();
const Command& pasteIconCommand();
const Command& createThumbnailsCommand();
const Command& restoreThumbnailsCommand();
const Command& saveAsIcnsCommand();
const Command& requestCommand();
const Command& installFileManagerActionsCommand();
const Command& uninstallFileManagerActionsCommand();

} // namespace quilo::cli
