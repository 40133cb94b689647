// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#ifdef _WIN32
#include <cstdio>
#include <windows.h>

namespace {

// Under Wine, a crashed program may exit with code 0; this makes it fail.
LONG WINAPI endWithFailure(EXCEPTION_POINTERS* crash) {
    constexpr UINT kCrashed = 134;
    std::fprintf(stderr, "crashed: exception 0x%08lx\n", crash->ExceptionRecord->ExceptionCode);
    std::fflush(stderr);
    TerminateProcess(GetCurrentProcess(), kCrashed);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace
#endif

int main(int argc, char** argv) {
#ifdef _WIN32
    SetUnhandledExceptionFilter(endWithFailure);
#endif
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
