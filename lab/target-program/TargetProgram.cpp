// Stands in for OneNote and Datebookery: runs with one hidden top-level window of the class "LabTargetProgram" until it
// is told to end. The command line chooses by what:
//
//     /stubborn      it ignores being asked to close (WM_CLOSE); without this it obeys
//     /until NAME    it ends when the event of that name is signalled
//
// The exit code is 0.

#include <windows.h>

#include <shellapi.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

bool Stubborn = false;

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CLOSE:
        if (Stubborn)
            return 0;
        break;
    case WM_DESTROY:
        PostQuitMessage(0);
        break;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void CreateTargetWindow(HINSTANCE instance) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = WindowProcedure;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = L"LabTargetProgram";
    RegisterClassW(&windowClass);
    CreateWindowExW(0, windowClass.lpszClassName, L"Lab", WS_OVERLAPPEDWINDOW, 0, 0, 200, 100, nullptr, nullptr,
                    instance, nullptr);
}

std::wstring ReadOptions() {
    std::wstring eventName;
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int index = 1; index < count; ++index) {
        const std::wstring_view argument = arguments[index];
        if (argument == L"/stubborn")
            Stubborn = true;
        else if (argument == L"/until" && index + 1 < count)
            eventName = arguments[index + 1];
    }
    LocalFree(arguments);
    return eventName;
}

/// False when the message loop shall end.
bool DispatchMessages() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT)
            return false;
        DispatchMessageW(&message);
    }
    return true;
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, wchar_t* /*commandLine*/, int /*show*/) {
    const std::wstring eventName = ReadOptions();
    std::vector<HANDLE> events;
    if (!eventName.empty())
        events.push_back(CreateEventW(nullptr, TRUE, FALSE, eventName.c_str()));
    CreateTargetWindow(instance);
    while (DispatchMessages()) {
        const auto count = static_cast<DWORD>(events.size());
        if (MsgWaitForMultipleObjects(count, events.data(), FALSE, INFINITE, QS_ALLINPUT) != WAIT_OBJECT_0 + count)
            return 0;
    }
    return 0;
}
