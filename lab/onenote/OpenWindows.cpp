#include "lab/onenote/OpenWindows.h"

#include "lab/onenote/Behaviour.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

constexpr wchar_t WindowClass[] = L"LabOneNote";
constexpr wchar_t FrameClass[] = L"LabOneNoteFrame";

/// Of a top-level window, in pixels.
constexpr SIZE Size{360, 200};

/// Top-level windows of this process.
unsigned OpenCount = 0;

std::wstring TitleOf(HWND window) {
    std::array<wchar_t, 32> title{};
    GetWindowTextW(window, title.data(), static_cast<int>(title.size()));
    return title.data();
}

/// Windows are numbered from 1, in the order in which they were opened; any process can read that.
LONG_PTR NumberOf(HWND window) {
    return GetWindowLongPtrW(window, GWLP_USERDATA);
}

void OnClose(HWND window) {
    const Behaviour::Closing closing = Behaviour::HowToClose();
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

LRESULT CALLBACK TopLevelProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case WM_CLOSE:
        OnClose(window);
        return 0;
    case WM_CREATE:
        ++OpenCount;
        break;
    case WM_DESTROY:
        --OpenCount;
        PostMessageW(nullptr, WM_NULL, 0, 0); // wakes the message loop, also for a message that was sent
        break;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    if (message == WM_PAINT) {
        OnPaint(window);
        return 0;
    }
    if (GetAncestor(window, GA_ROOT) == window)
        return TopLevelProcedure(window, message, wParam, lParam);
    return message == WM_CLOSE ? 0 : DefWindowProcW(window, message, wParam, lParam); // its frame closes
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

/// Without a frame it is a top-level window.
HWND Create(const wchar_t* windowClass, LONG_PTR number, HWND frame = nullptr) {
    const int offset = frame == nullptr ? 24 * static_cast<int>(number) : 0;
    const std::wstring title = L"OneNote " + std::to_wstring(number);
    HWND window =
        CreateWindowExW(0, windowClass, title.c_str(), frame == nullptr ? WS_OVERLAPPEDWINDOW : WS_CHILD | WS_VISIBLE,
                        offset, offset, Size.cx, Size.cy, frame, nullptr, GetModuleHandleW(nullptr), nullptr);
    SetWindowLongPtrW(window, GWLP_USERDATA, number);
    return window;
}

BOOL CALLBACK Collect(HWND top, LPARAM collected) noexcept {
    std::array<wchar_t, 32> text{};
    GetClassNameW(top, text.data(), static_cast<int>(text.size()));
    const std::wstring name = text.data();
    HWND window = nullptr;
    if (name == WindowClass)
        window = top;
    else if (name == FrameClass)
        window = FindWindowExW(top, nullptr, WindowClass, nullptr);
    if (window != nullptr)
        reinterpret_cast<std::vector<HWND>*>(collected)->push_back(window);
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
    const std::vector<HWND> others = WindowsInOrder();
    const LONG_PTR number = others.empty() ? 1 : NumberOf(others.back()) + 1;
    const bool framed = Behaviour::HasFrames();
    HWND top = Create(framed ? FrameClass : WindowClass, number);
    if (framed)
        Create(WindowClass, number, top);
    SetWindowPos(top, HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
}

bool HasWindows() {
    return OpenCount != 0;
}

std::vector<HWND> WindowsInOrder() {
    std::vector<HWND> windows = FromFrontToBack();
    std::ranges::sort(windows, {}, NumberOf);
    return windows;
}

HWND CurrentWindow() {
    const std::vector<HWND> windows = FromFrontToBack();
    return windows.empty() ? nullptr : windows.front();
}
