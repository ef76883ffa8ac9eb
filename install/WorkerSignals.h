#pragma once

#include <windows.h>

// Through what worker and window reach each other, apart from the screens (install/ScreenState.h). Plain values, which
// the main thread writes before the worker's thread exists, unless a line says otherwise. They live as long as the
// process.

/// The installer window; null while there is none, as always in unattended mode.
inline HWND MainWindow = nullptr;

/// Auto-reset. Signalled by Retry, and when the worker shall end.
inline HANDLE ContinueEvent = nullptr;

/// Auto-reset. Signalled by the worker when it returns because of `ExitRequested`.
inline HANDLE WorkerDoneEvent = nullptr;

/// The window is gone. Written by the main thread before it signals `ContinueEvent`, which orders the write.
inline bool ExitRequested = false;
