#include "lab/onenote/OpenWindows.h"

#include "lab/onenote/Behaviour.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

namespace {

constexpr wchar_t WindowClass[] = L"LabOneNote";
constexpr wchar_t FrameClass[] = L"LabOneNoteFrame";

unsigned Open = 0;

/// Of a top-level window, in pixels.
constexpr SIZE Size{360, 200};

std::wstring TitleOf(HWND window) {
    std::array<wchar_t, 32> title{};
    GetWindowTextW(window, title.data(), static_cast<int>(title.size()));
    return title.data();
}

void OnClose(HWND window) {
    const Behaviour::Closing closing = Behaviour::OnClose();
    if (closing == Behaviour::Closing::Ignore)
        return;
    if (closing == Behaviour::Closing::Ask &&
        MessageBoxW(window, L"This page was not saved. Close without saving?", L"OneNote", MB_OKCANCEL) != IDOK)
        return;
    DestroyWindow(window);
}

void OnPaint(HWND window) {
    PAINTSTRUCT paint{};
    HDC surface = BeginPaint(window, &paint);
    RECT client{};
    GetClientRect(window, &client);
    SelectObject(surface, GetStockObject(DEFAULT_GUI_FONT));
    const std::wstring text = TitleOf(window) + L"\nStands in for Microsoft OneNote";
    InflateRect(&client, 0, -client.bottom / 3);
    DrawTextW(surface, text.c_str(), -1, &client, DT_CENTER);
    EndPaint(window, &paint);
}

LRESULT CALLBACK TopLevelProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CLOSE:
        OnClose(window);
        return 0;
    case WM_CREATE:
        ++Open;
        break;
    case WM_DESTROY:
        --Open;
        break;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_PAINT) {
        OnPaint(window);
        return 0;
    }
    const bool embedded = GetAncestor(window, GA_ROOT) != window;
    return embedded ? DefWindowProcW(window, message, wParam, lParam)
                    : TopLevelProcedure(window, message, wParam, lParam);
}

void RegisterWindowClass(const wchar_t* name, WNDPROC procedure) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = GetSysColorBrush(COLOR_WINDOW);
    windowClass.lpszClassName = name;
    RegisterClassW(&windowClass); // fails from the second time on
}

HWND OpenTopLevel(const wchar_t* windowClass, const std::wstring& title, int offset) {
    return CreateWindowExW(0, windowClass, title.c_str(), WS_OVERLAPPEDWINDOW, offset, offset, Size.cx, Size.cy,
                           nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
}

BOOL CALLBACK Collect(HWND top, LPARAM collected) {
    std::array<wchar_t, 32> name{};
    GetClassNameW(top, name.data(), static_cast<int>(name.size()));
    auto& windows = *reinterpret_cast<std::vector<HWND>*>(collected);
    if (name.data() == std::wstring(WindowClass))
        windows.push_back(top);
    else if (name.data() == std::wstring(FrameClass))
        windows.push_back(FindWindowExW(top, nullptr, WindowClass, nullptr));
    return TRUE;
}

/// All of them, the foremost first.
std::vector<HWND> FromFrontToBack() {
    std::vector<HWND> windows;
    EnumWindows(Collect, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

} // namespace

void OpenWindow() {
    RegisterWindowClass(WindowClass, WindowProcedure);
    RegisterWindowClass(FrameClass, TopLevelProcedure);
    const auto number = static_cast<int>(OpenWindows().size()) + 1;
    const std::wstring title = L"OneNote " + std::to_wstring(number);
    const bool framed = Behaviour::HasFrames();
    HWND top = OpenTopLevel(framed ? FrameClass : WindowClass, title, 24 * number);
    if (framed) {
        RECT client{};
        GetClientRect(top, &client);
        CreateWindowExW(0, WindowClass, title.c_str(), WS_CHILD | WS_VISIBLE, 0, 0, client.right, client.bottom, top,
                        nullptr, GetModuleHandleW(nullptr), nullptr);
    }
    SetWindowPos(top, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

bool HasWindows() {
    return Open != 0;
}

std::vector<HWND> OpenWindows() {
    std::vector<HWND> windows = FromFrontToBack();
    std::ranges::sort(windows, {}, TitleOf);
    return windows;
}

HWND CurrentWindow() {
    const std::vector<HWND> windows = FromFrontToBack();
    return windows.empty() ? nullptr : windows.front();
}
