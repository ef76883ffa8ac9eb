// Stands in for Datebookery: runs with one hidden top-level window of the class "LabDatebookery" until that is asked to
// close (WM_CLOSE). The exit code is 0.

#include <windows.h>

namespace {

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DESTROY)
        PostQuitMessage(0);
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, wchar_t* /*commandLine*/, int /*show*/) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = WindowProcedure;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"LabDatebookery";
    RegisterClassW(&windowClass);
    CreateWindowExW(0, windowClass.lpszClassName, L"Datebookery", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr, nullptr,
                    instance, nullptr);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
    return 0;
}
