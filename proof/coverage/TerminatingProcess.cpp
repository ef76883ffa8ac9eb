#include <windows.h>

// The linker gives every call of TerminateProcess the pointer of this file instead of the one of the import table.

extern "C" {

#include <gcov.h> // which does not say so itself

extern decltype(&TerminateProcess) __real___imp_TerminateProcess;

static BOOL WINAPI WriteCountsAndTerminate(HANDLE process, UINT exitCode) {
    if (process == GetCurrentProcess())
        __gcov_dump();
    return __real___imp_TerminateProcess(process, exitCode);
}

decltype(&TerminateProcess) __wrap___imp_TerminateProcess = WriteCountsAndTerminate;
}
