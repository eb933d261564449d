#pragma once

#include <filesystem>
#include <string>

// The custom-icon operations answer yes or no; after a no, these find the
// reason to tell the user.
namespace quilo {
class IconFamily;
}

namespace quilo::cli {

// Why setting or removing the custom icon of `path` could not be done.
std::string explainCustomIconFailure(const std::filesystem::path& path);

// Gives the file or folder the family as its custom icon; the command's exit
// status, with the reason on stderr when it could not be done.
int setCustomIcon(const char* command, const IconFamily& family, const std::filesystem::path& path,
                  bool withCompatibility = false);

} // namespace quilo::cli
