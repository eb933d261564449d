#pragma once

#include <ctime>
#include <filesystem>
#include <optional>

namespace quilo {

// A file's modification time to the nanosecond, links followed.
std::optional<timespec> modificationDate(const std::filesystem::path& path);
// Puts it back, leaving the access time alone. False when it cannot.
bool setModificationDate(const std::filesystem::path& path, const timespec& date);

} // namespace quilo
