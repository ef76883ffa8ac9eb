#pragma once

#include <windows.h>

/// The exit code of a process that an uncaught error ended: STATUS_FATAL_APP_EXIT.
inline constexpr UINT AbnormalExitCode = 0x40000015;

/// Ends the process at once with `AbnormalExitCode`. The log's last entry may be lost: it is in memory until the next
/// one begins. Any thread, also before the entry point runs.
[[noreturn]] void EndProcessAbnormally();

/// From now on a processor fault that nothing handles, on any thread, ends the process with `EndProcessAbnormally`. Any
/// thread, also before the run-time library is ready, which sets a handler of its own and calls this one after it.
void EndProcessOnProcessorFaults();

/// From now on an error that nothing catches, C++ exception or processor fault, on any thread, ends the process at once
/// with `EndProcessAbnormally`. No message box of the C runtime or of Windows: during a silent installation nobody
/// could see or close it. A heap that Windows finds corrupt ends the process too, with an exit code of Windows' own.
void EndProcessOnUncaughtErrors();
