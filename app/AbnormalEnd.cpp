#include "app/AbnormalEnd.h"

#include <csignal>
#include <exception>

namespace {

[[noreturn]] void EndProcess() {
    TerminateProcess(GetCurrentProcess(), AbnormalExitCode);
    std::_Exit(static_cast<int>(AbnormalExitCode)); // not reached
}

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* /*exception*/) {
    EndProcess();
}

void OnAbort(int /*signal*/) {
    EndProcess();
}

} // namespace

void EndProcessOnUncaughtErrors() {
    std::set_terminate(EndProcess);
    std::signal(SIGABRT, OnAbort);
    SetUnhandledExceptionFilter(OnUnhandledException);
}
