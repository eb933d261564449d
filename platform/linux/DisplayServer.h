#pragma once

// Qt aborts the process when the X server it is told to use cannot be
// reached; a command that only needs the clipboard asks first.
namespace quilo {

// False when Qt would use X11 and the named server does not answer; true for
// the other platforms, which Qt opens as it is told.
bool displayServerAnswers();

} // namespace quilo
