#pragma once

#include <filesystem>

namespace quilo::cli {

// Prints the custom-icon state of a file or folder: its Finder info, the
// resources in its fork (a folder's: those of its icon file) and whether a
// custom icon shows. False when the item is missing or its metadata is
// damaged.
bool printCustomIconState(const std::filesystem::path& path);

} // namespace quilo::cli
