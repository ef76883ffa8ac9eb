#pragma once

#include <windows.h>

#include <string>

// How this process was launched. Written by the entry point before a second thread exists, then only read. Lives as
// long as the process.

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
