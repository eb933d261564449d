#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

// The custom-icon operations answer yes or no and say what stopped them;
// these turn that into the reason to tell the user.
namespace quilo {
class IconFamily;
struct ForkFailure;
}

namespace quilo::cli {

// Why setting or removing the custom icon of an item could not be done;
// `iconSize`, when known, is named if the icon was too large.
std::string explainCustomIconFailure(const ForkFailure& failure, std::size_t iconSize = 0);

// Gives the file or folder the family as its custom icon; the command's exit
// status, with the reason on stderr when it could not be done.
int setCustomIcon(const char* command, const IconFamily& family, const std::filesystem::path& path,
                  bool withCompatibility = false);

} // namespace quilo::cli
