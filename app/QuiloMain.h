#pragma once

namespace quilo {

// `quilo` with no arguments: the tray application, until it quits.
int quiloApplicationMain(int argc, char** argv);

// Whether Qt has a display to open; without one it ends the process with a
// core dump, so callers say so first.
bool displayAvailable();

} // namespace quilo
