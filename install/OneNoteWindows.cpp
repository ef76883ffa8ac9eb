#include "install/OneNoteWindows.h"

#include "install/OneNoteAutomation.h"

#include <vector>

namespace {

std::vector<OneNoteWindowPtr> Collect(const OneNoteWindowsPtr& collection) {
    const std::uint32_t count = CountOf(collection);
    std::vector<OneNoteWindowPtr> windows;
    for (std::uint32_t index = 0; index < count; ++index) {
        OneNoteWindowPtr window;
        ThrowIfCallFailed(collection->get_Item(index, &window), collection);
        windows.push_back(window);
    }
    return windows;
}

} // namespace

void CloseOneNoteWindows() {
    const OneNoteApplicationPtr application = ConnectToOneNote();
    const OneNoteWindowsPtr collection = WindowsOf(application);
    const std::vector<OneNoteWindowPtr> windows = Collect(collection); // all of them before any is closed
    const HWND desktop = GetDesktopWindow();
    for (const OneNoteWindowPtr& window : windows) {
        const HWND topLevel = GetAncestor(HandleOf(window), GA_ROOT);
        if (topLevel != desktop) // null for a window that is gone; the message goes to this thread then, which drops it
            PostMessageW(topLevel, WM_CLOSE, 0, 0);
    }
}
