#include "app/AbnormalEnd.h"

#include <csignal>
#include <exception>

namespace {

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* /*exception*/) {
    EndProcessAbnormally();
}

void OnAbort(int /*signal*/) {
    EndProcessAbnormally();
}

} // namespace

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
}
