#pragma once

#include <string>

namespace quilo {
class IconFamily;
}

// On X11 the clipboard's content lives in the program that owns it, so a
// command that copies must leave a process behind to hold it, as xclip does.
namespace quilo::cli {

// Forks a process of its own session that puts the family on the clipboard
// and serves it until another program takes the clipboard. True once that
// process owns the clipboard; otherwise false with the reason in `error`.
// Call before anything in this process starts Qt.
bool keepOnClipboard(const IconFamily& family, std::string& error);

} // namespace quilo::cli
