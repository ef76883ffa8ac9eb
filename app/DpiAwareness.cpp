#include "app/DpiAwareness.h"

#include "core/SystemLibrary.h"

#include <shellscalingapi.h>

void SetDpiAwareness() {
    // The library stays loaded: what is set lasts as long as the process.
    const HMODULE library = LoadSystemLibrary(L"shcore.dll");
    if (library == nullptr)
        return;
    // It does the work. Wine's shcore.dll would load it during the call, and search beside the program first.
    LoadSystemLibrary(L"user32.dll");
    // Windows 7 does not have it.
    auto* const function = FindFunction<HRESULT WINAPI(PROCESS_DPI_AWARENESS)>(library, "SetProcessDpiAwareness");
    if (function != nullptr)
        function(PROCESS_SYSTEM_DPI_AWARE);
    else
        SetProcessDPIAware();
}
