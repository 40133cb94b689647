// SPDX-License-Identifier: MIT
#include "interrupt.h"

namespace percussomatic::tool {

namespace {

volatile std::sig_atomic_t signalled = 0;

void setSignalled(int) {
    signalled = 1;
}

} // namespace

InterruptGuard::InterruptGuard() {
    for (std::size_t at = 0; at < kSignals.size(); ++at) {
        previous_[at] = std::signal(kSignals[at], SIG_IGN);
        if (previous_[at] != SIG_IGN) {
            std::signal(kSignals[at], setSignalled);
        }
    }
}

InterruptGuard::~InterruptGuard() {
    for (std::size_t at = 0; at < kSignals.size(); ++at) {
        std::signal(kSignals[at], previous_[at]);
    }
}

bool interrupted() noexcept {
    return signalled != 0;
}

} // namespace percussomatic::tool
