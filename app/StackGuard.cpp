// The variable and the function that the compiler's stack protector refers to. Its own run-time library asks the
// cryptography service for the value, and three libraries are loaded that nothing else needs.

#include "app/StackGuard.h"

#include "app/AbnormalEnd.h"

#include <windows.h>

#if defined(__MINGW32__)

unsigned long long StackGuard = UnchosenStackGuard;

extern "C" [[noreturn]] void OnOverwrittenStack() asm("__stack_chk_fail");

void OnOverwrittenStack() {
    EndProcessAbnormally();
}

// Of the library's own checks, which the checked build asks for. The library has it in one object with its guard.
extern "C" [[noreturn, gnu::alias("__stack_chk_fail")]] void OnOverwrittenObject() asm("__chk_fail");

namespace {

/// Where Windows has not done it, in the way of Microsoft's run-time library.
__attribute__((no_stack_protector)) void ChooseStackGuard() {
    if (StackGuard != UnchosenStackGuard)
        return;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    LARGE_INTEGER ticks{};
    QueryPerformanceCounter(&ticks);
    const ULONGLONG time = now.dwLowDateTime;
    const ULONGLONG thread = GetCurrentThreadId();
    StackGuard = time << 16 ^ thread << 32 ^ GetCurrentProcessId() ^ static_cast<ULONGLONG>(ticks.QuadPart) ^
                 reinterpret_cast<ULONG_PTR>(&now);
    StackGuard &= 0x0000FFFFFFFFFFFF; // a text that is copied past its array can't hold the zeros
}

[[gnu::section(".CRT$XCU"), gnu::used]] void (*const BeforeAnyConstructor)() = ChooseStackGuard;

} // namespace

#endif
