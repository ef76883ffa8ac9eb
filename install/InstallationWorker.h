#pragma once

#include <windows.h>

/// Performs installation passes; its argument is unused. Each pass waits for OneNote to be gone, runs the elevated
/// installer, repairs the user's settings, and posts its states to `MainWindow`.
///
/// In unattended mode there is one pass and nothing is posted: returns 0 when it succeeded, 1 when it failed.
/// Otherwise it waits for `ContinueEvent` after each pass: with `ExitRequested` it signals `WorkerDoneEvent` and
/// returns 0, without it the user pressed Retry and a new pass begins.
///
/// A `_com_error` of a pass becomes `ErrorText` and the Failed state; any other exception leaves it. Initialises COM on
/// the calling thread (single-threaded apartment) and leaves it so.
DWORD WINAPI InstallationWorker(void* context);
