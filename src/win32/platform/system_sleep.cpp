// SPDX-License-Identifier: MIT
#include "system_sleep.h"

#include <windows.h>

namespace percussomatic {

void keepSystemAwake(bool awake) noexcept {
    SetThreadExecutionState(awake ? ES_CONTINUOUS | ES_SYSTEM_REQUIRED : ES_CONTINUOUS);
}

} // namespace percussomatic
