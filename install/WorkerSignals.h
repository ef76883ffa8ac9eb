#pragma once

#include <windows.h>

#include <atomic>

// What worker and window use to reach each other, apart from the screens (install/ScreenState.h). Plain values, which
// the main thread writes before the worker's thread exists, unless a line says otherwise. They live as long as the
// process.

/// The installer window. Null before it is created, and always in unattended mode; keeps its value when the window is
/// gone.
inline HWND MainWindow = nullptr;

/// Auto-reset. Signalled by Retry, and when the worker shall end.
inline HANDLE ContinueEvent = nullptr;

/// Auto-reset. Signalled by the worker when it returns because of `ExitRequested`.
inline HANDLE WorkerDoneEvent = nullptr;

/// The window is gone. Written by the main thread before it signals `ContinueEvent`.
inline std::atomic<bool> ExitRequested = false;
