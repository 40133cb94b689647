#pragma once

#include <csignal>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace percussomatic {

// Does some work in a process of its own, which is killed after it has called the system so many
// times and half times: before its first call with 0, when that has returned with 1, before the
// second with 2. False when the work was done before.
template <typename Work>
bool killedInCall(int halfCalls, Work work) {
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
    for (int stops = -1; stops < halfCalls; ++stops) {
        ptrace(PTRACE_SYSCALL, child, nullptr, nullptr); // on to the next entry or return
        waitpid(child, &status, 0);
        if (WIFEXITED(status)) {
            return false;
        }
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
}

} // namespace percussomatic
