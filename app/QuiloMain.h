#pragma once

namespace quilo {

// `quilo` with no arguments: the tray application, until it quits.
int quiloApplicationMain(int argc, char** argv);

} // namespace quilo
