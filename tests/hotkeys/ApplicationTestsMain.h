#pragma once

#include "hotkeys/QuiloApplication.h"
#include "tests/support/RecordingHotKeyRegistrar.h"

namespace quilo::test {

// The hot-key service under the run's one QuiloApplication.
extern RecordingHotKeyRegistrar* gRegistrar;

} // namespace quilo::test
