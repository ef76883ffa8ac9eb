#pragma once

#include <windows.h>

/// Loads a library of Windows by its bare name, and leaves it loaded. It comes from where the manifest or Windows
/// itself redirects that name, as that of the common controls, or else from the system folder, and from nowhere else.
/// The same holds for the libraries that it needs. Null with the error in GetLastError when that fails. Any thread,
/// also before the entry point runs.
HMODULE LoadSystemLibrary(const wchar_t* name);
