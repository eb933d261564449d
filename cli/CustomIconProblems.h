#pragma once

#include <filesystem>
#include <string>

// The custom-icon operations answer yes or no; after a no, these find the
// reason to tell the user.
namespace quilo::cli {

// Why setting or removing the custom icon of `path` could not be done.
std::string explainCustomIconFailure(const std::filesystem::path& path);

} // namespace quilo::cli
