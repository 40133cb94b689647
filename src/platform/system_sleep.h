// SPDX-License-Identifier: MIT
#pragma once

namespace percussomatic {

// Keeps the computer from going to sleep by itself, until called with false. The display may still
// be switched off. GUI thread.
void keepSystemAwake(bool awake) noexcept;

} // namespace percussomatic
