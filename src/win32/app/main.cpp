// SPDX-License-Identifier: MIT
#include "win32/app/start_up.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    return percussomatic::runPercussomatic(instance);
}
