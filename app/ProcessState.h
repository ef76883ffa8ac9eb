#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <memory>
#include <string>

// The process-wide state. It lives as long as the process, and includes nothing of the project, so that every folder
// may read it. Plain values without a lock: start-up writes them before a second thread exists, unless a line says
// otherwise.

/// The module of the running program.
inline HINSTANCE InstanceHandle = nullptr;

/// The command line as the entry point received it, without the program's name.
inline std::wstring CommandLineText;

/// The argument of "/config", handed on to the elevated installer; empty without that option.
inline std::wstring ConfigPath;

/// "/delay" was given: longer waits for OneNote.
inline bool DelayOption = false;

/// No window: one pass on the main thread, whose result is the exit code. True exactly when there is a `ConfigPath`.
inline bool UnattendedMode = false;

/// The installer window; null while there is none, as always in unattended mode.
inline HWND MainWindow = nullptr;

/// Its right button and its left one.
inline HWND PrimaryButton = nullptr;
inline HWND SecondaryButton = nullptr;

/// The logo that the window shows; null when there was no memory for it.
inline std::unique_ptr<Gdiplus::Bitmap> LogoBitmap;

/// Auto-reset. Signalled by Retry, and when the worker shall end.
inline HANDLE ContinueEvent = nullptr;

/// Auto-reset. Signalled by the worker when it returns because of `ExitRequested`.
inline HANDLE WorkerDoneEvent = nullptr;

/// The window is gone. Written by the main thread before it signals `ContinueEvent`, which orders the write.
inline bool ExitRequested = false;

/// What the Failed screen shows. Written by the worker before it posts that screen.
inline std::wstring ErrorText;
