// SPDX-License-Identifier: MIT
#pragma once

namespace percussomatic {

// A window of the system, or null. The core compares it and passes it on.
using WindowHandle = void*;

// The panel's window; null before it exists and while it is being destroyed. GUI thread.
WindowHandle mainWindow() noexcept;

} // namespace percussomatic
