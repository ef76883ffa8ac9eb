#include "app/AbnormalEnd.h"

#include <csignal>
#include <exception>

// As in werapi.h, which does not compile in mingw-w64.
extern "C" __declspec(dllimport) HRESULT WINAPI WerSetFlags(DWORD flags);

namespace {

/// WER_FAULT_REPORTING_NO_UI: Windows' error reporting shows no window.
constexpr DWORD WithoutUi = 0x20;

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* /*exception*/) {
    EndProcessAbnormally();
}

void OnAbort(int /*signal*/) {
    EndProcessAbnormally();
}

} // namespace

#if defined(__MINGW32__)
// What is called until std::set_terminate names another one. The run-time library's own prints the exception, and has
// all with it that unmangles the name of a type.
void __gnu_cxx::__verbose_terminate_handler() {
    EndProcessAbnormally();
}
#endif

void EndProcessAbnormally() {
    TerminateProcess(GetCurrentProcess(), AbnormalExitCode);
    std::_Exit(static_cast<int>(AbnormalExitCode)); // not reached
}

void EndProcessOnProcessorFaults() {
    SetUnhandledExceptionFilter(OnUnhandledException);
}

void EndProcessOnUncaughtErrors() {
    std::set_terminate(EndProcessAbnormally);
    std::signal(SIGABRT, OnAbort);
    EndProcessOnProcessorFaults();
    HeapSetInformation(nullptr, HeapEnableTerminationOnCorruption, nullptr, 0);
    WerSetFlags(WithoutUi); // it would show that end
}
