#pragma once

#include "iconfamily/AppleDouble.h"
#include "iconfamily/IconServices.h"

#include <filesystem>
#include <optional>

// Reading and replacing one sidecar file.
namespace quilo::sidecar {

// Larger than any sidecar a fork of the Resource Manager's format fits in.
constexpr std::uintmax_t kMaxSidecarSize = 32u << 20;

// noErr with nullopt when there is no sidecar; mapReadErr when there is one
// that is not a well-formed AppleDouble file; ioErr when it cannot be read.
OSErr load(const std::filesystem::path& path, std::optional<AppleDouble>& sidecar);

enum class WhenEmpty { Delete, Keep };

// Replaces the sidecar atomically, or deletes it when it holds nothing and
// `whenEmpty` allows.
OSErr store(const std::filesystem::path& path, const AppleDouble& sidecar, WhenEmpty whenEmpty);

} // namespace quilo::sidecar
