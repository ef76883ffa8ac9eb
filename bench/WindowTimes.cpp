// Starts an installer with a window and prints how many milliseconds later its window was visible, and how many later
// the screen showed the logo in it. Then it closes the window, and ends with the installer's exit code.
//
//     window-times COLOUR COMMAND_LINE
//
// COLOUR is the one that the logo has most of, as RRGGBB.

#include "core/Unique.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

/// More than the icon has, which the peer shows beside its logo.
constexpr std::ptrdiff_t PixelsOfLogo = 600;

using Clock = std::chrono::steady_clock;

/// What an installer may take to show something.
constexpr std::chrono::seconds Patience(30);

UniqueHandle Start(const wchar_t* commandLine) {
    std::wstring copy = commandLine;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION information{};
    if (!CreateProcessW(nullptr, copy.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &information))
        return {};
    CloseHandle(information.hThread);
    return UniqueHandle(information.hProcess);
}

struct Search {
    DWORD process;
    HWND window;
};

/// The visible top-level window of a process; null without one.
HWND VisibleWindowOf(HANDLE process) {
    Search search{.process = GetProcessId(process), .window = nullptr};
    EnumWindows(
        [](HWND window, LPARAM parameter) -> BOOL {
            auto& wanted = *reinterpret_cast<Search*>(parameter);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            if (owner != wanted.process || !IsWindowVisible(window))
                return TRUE;
            wanted.window = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.window;
}

/// How many pixels of that colour (0x00RRGGBB) the screen shows where the window is.
std::ptrdiff_t CountOnScreen(HWND window, std::uint32_t colour) {
    RECT area{};
    GetWindowRect(window, &area);
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    BITMAPINFO format{};
    format.bmiHeader.biSize = sizeof format.bmiHeader;
    format.bmiHeader.biWidth = width;
    format.bmiHeader.biHeight = height;
    format.bmiHeader.biPlanes = 1;
    format.bmiHeader.biBitCount = 32;
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const HDC screen = GetDC(nullptr); // nothing below throws: each is released in the same breath, without an owner
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
    SelectObject(memory, before);
    GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), pixels.data(), &format, DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return std::ranges::count_if(pixels, [colour](std::uint32_t pixel) { return (pixel & 0xFFFFFF) == colour; });
}

/// How many milliseconds after the start it is true; negative when it never is.
template <typename Condition>
double Await(Clock::time_point start, Condition condition) {
    while (Clock::now() - start < Patience) {
        if (condition())
            return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        Sleep(1);
    }
    return -1;
}

/// Returns the exit code. The peer takes no close box: in the end its Close button, which is a dialog's OK, is enabled.
DWORD CloseAndWait(HANDLE process) {
    const auto start = Clock::now();
    while (WaitForSingleObject(process, 50) == WAIT_TIMEOUT) {
        const HWND window = VisibleWindowOf(process);
        PostMessageW(window, WM_CLOSE, 0, 0);
        const HWND button = GetDlgItem(window, IDOK);
        if (IsWindowEnabled(button))
            PostMessageW(button, BM_CLICK, 0, 0);
        if (Clock::now() - start > Patience)
            TerminateProcess(process, 2);
    }
    DWORD code = 2;
    GetExitCodeProcess(process, &code);
    return code;
}

} // namespace

int main() {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count != 3)
        return 2;
    const auto colour = static_cast<std::uint32_t>(std::wcstoul(arguments[1], nullptr, 16));
    const auto start = Clock::now();
    const UniqueHandle process = Start(arguments[2]);
    if (!process)
        return 2;
    HWND window = nullptr;
    const double visible = Await(start, [&] { return (window = VisibleWindowOf(process.Get())) != nullptr; });
    const double painted = Await(start, [&] { return CountOnScreen(window, colour) >= PixelsOfLogo; });
    if (visible < 0 || painted < 0) {
        TerminateProcess(process.Get(), 2);
        return 2;
    }
    std::printf("%.3f %.3f\n", visible, painted);
    return static_cast<int>(CloseAndWait(process.Get()));
}
