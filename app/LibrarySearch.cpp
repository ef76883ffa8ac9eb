#include "app/LibrarySearch.h"

#include "core/SystemLibrary.h"

void LimitLibrarySearch() {
    // Windows 7 has it only since an update (KB2533623).
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    auto* const function = FindFunction<decltype(SetDefaultDllDirectories)>(kernel, "SetDefaultDllDirectories");
    if (function != nullptr)
        function(LOAD_LIBRARY_SEARCH_SYSTEM32);
    // Also for those that Windows loads by their path, as COM and the shell do: what they need is searched for in the
    // old order.
    SetDllDirectoryW(L"");
}

void LoadLibrariesOfWindows() {
    LoadSystemLibrary(L"msimg32.dll");       // of the common controls
    LoadSystemLibrary(L"windowscodecs.dll"); // of GDI+, for the logo
}
