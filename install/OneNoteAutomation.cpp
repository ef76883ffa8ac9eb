#include "install/OneNoteAutomation.h"

HRESULT CreateOneNoteApplication(OneNoteApplicationPtr& application) {
    return application.CreateInstance(CLSID_OneNoteApplication, nullptr, CLSCTX_ALL);
}

OneNoteApplicationPtr ConnectToOneNote() {
    OneNoteApplicationPtr application;
    _com_util::CheckError(CreateOneNoteApplication(application));
    return application;
}

OneNoteWindowsPtr WindowsOf(const OneNoteApplicationPtr& application) {
    OneNoteWindowsPtr windows;
    ThrowIfCallFailed(application->get_Windows(&windows), application);
    return windows;
}

std::uint32_t CountOf(const OneNoteWindowsPtr& windows) {
    std::uint32_t count = 0;
    ThrowIfCallFailed(windows->get_Count(&count), windows);
    return count;
}

HWND HandleOf(const OneNoteWindowPtr& window) {
    std::uint64_t handle = 0;
    ThrowIfCallFailed(window->get_WindowHandle(&handle), window);
    return reinterpret_cast<HWND>(handle);
}
