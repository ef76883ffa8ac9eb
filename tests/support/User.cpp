#include "tests/support/User.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

/// The time between two movements of a hand, in milliseconds.
constexpr DWORD HandSpeed = 50;

void Send(std::vector<INPUT> inputs) {
    const auto count = static_cast<UINT>(inputs.size());
    EXPECT_EQ(SendInput(count, inputs.data(), sizeof(INPUT)), count) << "error " << GetLastError();
}

INPUT Key(WORD key, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = flags;
    return input;
}

void SendMouse(POINT where, DWORD button) {
    const auto normalized = [](LONG pixels, int metric) {
        return (pixels * 65536L + 32768) / GetSystemMetrics(metric);
    };
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dx = normalized(where.x, SM_CXSCREEN);
    input.mi.dy = normalized(where.y, SM_CYSCREEN);
    input.mi.dwFlags = MOUSEEVENTF_ABSOLUTE | MOUSEEVENTF_MOVE | button;
    Send({input});
}

} // namespace

void User::Press(std::initializer_list<WORD> keys) {
    std::vector<INPUT> inputs;
    for (const WORD key : keys)
        inputs.push_back(Key(key, 0));
    for (const WORD* key = keys.end(); key != keys.begin();)
        inputs.push_back(Key(*--key, KEYEVENTF_KEYUP));
    Send(inputs);
}

void User::MouseDown(POINT where) {
    SendMouse(where, 0);
    Sleep(HandSpeed);
    SendMouse(where, MOUSEEVENTF_LEFTDOWN);
    Sleep(HandSpeed);
}

void User::MouseUp(POINT where) {
    SendMouse(where, MOUSEEVENTF_LEFTUP);
}

void User::Click(POINT where) {
    MouseDown(where);
    MouseUp(where);
}

void User::Click(HWND window) {
    Click(MiddleOf(window));
}

POINT User::MiddleOf(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

Picture User::LookAt(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    POINT origin{};
    ClientToScreen(window, &origin);
    const HDC screen = GetDC(nullptr);
    Gdiplus::Bitmap copy(client.right, client.bottom, PixelFormat32bppRGB);
    {
        Gdiplus::Graphics graphics(&copy);
        const HDC context = graphics.GetHDC();
        BitBlt(context, 0, 0, client.right, client.bottom, screen, origin.x, origin.y, SRCCOPY);
        graphics.ReleaseHDC(context);
    }
    ReleaseDC(nullptr, screen);
    return PictureOf(copy);
}

User::ConfirmedBoxes::ConfirmedBoxes()
    : user_([](const std::stop_token& end) {
          for (; !end.stop_requested(); Sleep(20)) {
              if (const HWND box = FindWindowW(L"#32770", nullptr); box != nullptr)
                  PostMessageW(box, WM_COMMAND, IDOK, 0);
          }
      }) {}
