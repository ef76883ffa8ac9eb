#include "install/OneNoteWindows.h"

#include "install/OneNoteAutomation.h"

#include <vector>

namespace {

OneNoteApplicationPtr Connect() {
    OneNoteApplicationPtr application;
    _com_util::CheckError(CreateOneNoteApplication(application));
    return application;
}

OneNoteWindowsPtr WindowsOf(const OneNoteApplicationPtr& application) {
    OneNoteWindowsPtr windows;
    ThrowIfCallFailed(application->get_Windows(&windows), application);
    return windows;
}

std::vector<OneNoteWindowPtr> Collect(const OneNoteWindowsPtr& collection) {
    std::uint32_t count = 0;
    ThrowIfCallFailed(collection->get_Count(&count), collection);
    std::vector<OneNoteWindowPtr> windows;
    for (std::uint32_t index = 0; index < count; ++index) {
        OneNoteWindowPtr window;
        ThrowIfCallFailed(collection->get_Item(index, &window), collection);
        windows.push_back(window);
    }
    return windows;
}

HWND TopLevelWindow(const OneNoteWindowPtr& window) {
    std::uint64_t handle = 0;
    ThrowIfCallFailed(window->get_WindowHandle(&handle), window);
    return GetAncestor(reinterpret_cast<HWND>(handle), GA_ROOT);
}

} // namespace

// A null application, collection or window throws E_POINTER: that is what _com_ptr_t does when it is followed.
void CloseOneNoteWindows() {
    const OneNoteApplicationPtr application = Connect();
    const OneNoteWindowsPtr collection = WindowsOf(application);
    const std::vector<OneNoteWindowPtr> windows = Collect(collection); // all of them before any is closed
    const HWND desktop = GetDesktopWindow();
    for (const OneNoteWindowPtr& window : windows) {
        const HWND topLevel = TopLevelWindow(window);
        if (topLevel != desktop) // a window that is gone has none: that message reaches nobody
            PostMessageW(topLevel, WM_CLOSE, 0, 0);
    }
}
