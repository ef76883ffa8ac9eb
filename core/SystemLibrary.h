#pragma once

#include <windows.h>

/// Loads a library of Windows by its bare name, and leaves it loaded. It comes from where the manifest or Windows
/// itself redirects that name, as that of the common controls, or else from the system folder, and from nowhere else.
/// The same holds for the libraries that it needs, but for a redirected one on a Windows 7 that lacks the update of the
/// search (KB2533623). Null with the error in GetLastError when that fails. Any thread, also before the entry point
/// runs, and without memory of its own.
HMODULE LoadSystemLibrary(const wchar_t* name);

/// A function that a library may lack: then null with the error in GetLastError. Any thread.
template <typename Function>
Function* FindFunction(HMODULE library, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}
