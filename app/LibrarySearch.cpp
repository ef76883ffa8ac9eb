#include "app/LibrarySearch.h"

#include "core/SystemLibrary.h"

namespace {

// Looked up at run time: Windows 7 has it only since an update (KB2533623).
using SetDefaultDllDirectoriesFunction = BOOL(WINAPI*)(DWORD);

} // namespace

void LimitLibrarySearch() {
    const FARPROC function = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories");
    if (function != nullptr)
        reinterpret_cast<SetDefaultDllDirectoriesFunction>(reinterpret_cast<void*>(function))(
            LOAD_LIBRARY_SEARCH_SYSTEM32);
    // Also for those that Windows loads by their path, as COM and the shell do: what they need is searched for in the
    // old order.
    SetDllDirectoryW(L"");
}

void LoadLibrariesOfWindows() {
    LoadSystemLibrary(L"msimg32.dll");       // of the common controls
    LoadSystemLibrary(L"windowscodecs.dll"); // of GDI+, for the logo
}
