// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace percussomatic {

// Runs work() in a child process and kills that at a stop in its system calls: 0 is the entry to
// the first call, 1 the return from it, 2 the entry to the second, and so on. Returns false if
// work() completed before that.
template <typename Work>
bool killedInCall(int stop, Work work) {
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
            _exit(1);
        }
        std::raise(SIGSTOP);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    for (int stops = -1; stops < stop && !WIFEXITED(status); ++stops) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr); // runs to the next entry or return
        waitpid(child, &status, 0);
    }
    if (WIFEXITED(status)) {
        return false;
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
}

} // namespace percussomatic
