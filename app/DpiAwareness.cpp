#include "app/DpiAwareness.h"

#include <windows.h>

#include <shellscalingapi.h>

namespace {

// Looked up at run time: Windows 7 does not have it.
using SetProcessDpiAwarenessFunction = HRESULT(WINAPI*)(PROCESS_DPI_AWARENESS);

} // namespace

void SetDpiAwareness() {
    // The library stays loaded: what is set lasts as long as the process.
    const HMODULE library = LoadLibraryW(L"shcore.dll");
    if (library == nullptr)
        return;
    const FARPROC function = GetProcAddress(library, "SetProcessDpiAwareness");
    if (function != nullptr)
        reinterpret_cast<SetProcessDpiAwarenessFunction>(reinterpret_cast<void*>(function))(PROCESS_SYSTEM_DPI_AWARE);
    else
        SetProcessDPIAware();
}
