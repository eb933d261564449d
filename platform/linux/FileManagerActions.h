#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// Quilo's entries in the context menus of the Linux file managers: each one
// runs `quilo request WORD PATHS...` on the selection, in the file manager's
// order. Every file manager keeps its entries in a format of its own.
namespace quilo::filemanager {

struct Action {
    const char* label;       // the menu item
    const char* word;        // what `quilo request` is asked to do
    const char* description; // the tooltip, where there is one
    const char* icon;        // a name from the icon theme
};

// The three actions, in menu order.
const std::array<Action, 3>& actions();

// Where the entries go and what they run.
struct Setup {
    std::filesystem::path dataHome;                // $XDG_DATA_HOME
    std::filesystem::path configHome;              // $XDG_CONFIG_HOME
    std::vector<std::filesystem::path> configDirs; // $XDG_CONFIG_DIRS: defaults the user's files override
    std::string quilo;                             // the absolute path of the quilo binary
};

// The folders from the environment, with the XDG defaults.
Setup setupFromEnvironment(std::string quilo);

// What an install or uninstall did, or where it stopped.
struct Result {
    std::vector<std::filesystem::path> written;
    std::vector<std::filesystem::path> removed;
    std::string error; // a sentence naming the file; empty on success
};

struct FileManager {
    const char* name;        // its program on PATH, and its name for --for
    const char* displayName; // as its users know it
    Result (*install)(const Setup& setup);
    Result (*uninstall)(const Setup& setup);
};

// Nautilus, Nemo, Caja, Dolphin and Thunar.
const std::vector<FileManager>& fileManagers();

// Each file manager's entries, one source file each.
FileManager nautilus();
FileManager caja();
FileManager nemo();
FileManager dolphin();
FileManager thunar();

// One word for a POSIX shell, in single quotes.
std::string shellQuoted(std::string_view word);

// One argument of a desktop entry's Exec line, in double quotes with the
// characters the shell treats as special escaped; key-file escaping still
// to be applied.
std::string desktopExecQuoted(std::string_view word);

// A key file's string value: backslashes, line breaks and a leading space
// escaped, so the file parses back to exactly `value`.
std::string keyFileEscaped(std::string_view value);

// Exec lines and Thunar's commands expand %-codes; a literal % is doubled.
std::string percentsDoubled(std::string_view text);

// Writes one file atomically, its folders made first; records the path in
// `result`, or the error naming it.
bool writeFile(const std::filesystem::path& path, std::string_view content, bool executable, Result& result);

// Removes a file if it is there; records it, or the error naming it.
bool removeFile(const std::filesystem::path& path, Result& result);

// Removes a folder of ours once it holds nothing (the user may have put
// something there).
void removeFolderIfEmpty(const std::filesystem::path& folder);

} // namespace quilo::filemanager
