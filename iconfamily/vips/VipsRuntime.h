#pragma once

namespace quilo {

// Starts libvips once per process, from whichever thread comes first.
// False if it could not start.
bool ensureVipsStarted();

} // namespace quilo
