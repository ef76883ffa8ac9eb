#include "tests/support/InstallerScreen.h"

#include "core/LocalizedStrings.h"
#include "install/ScreenState.h"
#include "tests/support/Layouts.h"
#include "tests/support/User.h"
#include "tests/support/WaitUntil.h"
#include "ui/Painting.h"

#include <array>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

HWND AwaitButton(HWND window, const Gdiplus::Rect& area) {
    HWND button = nullptr;
    WaitUntil("a button of the front-end", [&] {
        const POINT middle{area.X + area.Width / 2, area.Y + area.Height / 2};
        button = ChildWindowFromPointEx(window, middle, CWP_ALL);
        return button != nullptr && button != window;
    });
    return button;
}

bool HasCaption(HWND button, const std::wstring& caption) {
    const bool there = !caption.empty();
    return (IsWindowVisible(button) != FALSE) == there && (IsWindowEnabled(button) != FALSE) == there &&
           CaptionOf(button) == caption;
}

/// A visible button is drawn after the rest of the window.
bool IsDrawn(HWND button, const Picture& seen, const Gdiplus::Rect& area) {
    return IsWindowVisible(button) == FALSE || !IsFilled(seen, area, LightGrey);
}

} // namespace

std::wstring CaptionOf(HWND button) {
    std::array<wchar_t, 256> text{};
    DWORD_PTR length = 0;
    SendMessageTimeoutW(button, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_NORMAL, 5000,
                        &length);
    return {text.data(), length};
}

HWND FocusOf(HWND window) {
    GUITHREADINFO information{};
    information.cbSize = sizeof information;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &information);
    return information.hwndFocus;
}

InstallerScreen::InstallerScreen(const Program& frontEnd)
    : window_(AwaitWindow(frontEnd, L"WC_VELLUMKIT_INSTALLER")), primary_(AwaitButton(window_, LayoutHere().primary)),
      secondary_(AwaitButton(window_, LayoutHere().secondary)) {}

bool InstallerScreen::HasButtons(ScreenStatus status) const {
    // Before the first state is applied they are only hidden.
    if (status == ScreenStatus::Checking)
        return !IsWindowVisible(primary_) && !IsWindowVisible(secondary_);
    const ScreenState state = ScreenStateOf(status, 0);
    return HasCaption(primary_, state.primaryLabel) && HasCaption(secondary_, state.secondaryLabel);
}

void InstallerScreen::Await(ScreenStatus status) const {
    const Picture painted = PictureOf(*RenderScreen(status));
    const Gdiplus::Rect aboveTheButtons(0, 0, painted.width, LayoutHere().primary.Y);
    WaitUntil("the window in state " + std::to_string(static_cast<int>(status)), [&] {
        const Picture seen = User::LookAt(window_);
        return HasButtons(status) && Cut(seen, aboveTheButtons) == Cut(painted, aboveTheButtons) &&
               IsDrawn(primary_, seen, LayoutHere().primary) && IsDrawn(secondary_, seen, LayoutHere().secondary);
    });
}

void InstallerScreen::AwaitFailure(const std::wstring& errorText) const {
    SetErrorText(GetLocalizedString(StrInstallFailed) + L"\n\n" + errorText);
    Await(ScreenStatus::Failed);
}

bool InstallerScreen::HasFocus(HWND window) const {
    return GetForegroundWindow() == window_ && FocusOf(window_) == window;
}

void InstallerScreen::AwaitFocus(HWND window) const {
    WaitUntil("the focus on " + testing::PrintToString(CaptionOf(window)), [&] { return HasFocus(window); });
}

void InstallerScreen::Activate() const {
    SetForegroundWindow(window_);
    WaitUntil("the installer window in front", [&] { return GetForegroundWindow() == window_; });
}

void InstallerScreen::AwaitBackground() const {
    WaitUntil("another window in front", [&] { return GetForegroundWindow() != window_; });
}

POINT InstallerScreen::FindInCaption(LRESULT part) const {
    RECT area{};
    GetWindowRect(window_, &area);
    const LONG y = area.top + GetSystemMetrics(SM_CYFIXEDFRAME) + GetSystemMetrics(SM_CYCAPTION) / 2;
    for (LONG x = area.right - 1; x > area.left; --x) {
        if (SendMessageW(window_, WM_NCHITTEST, 0, MAKELPARAM(x, y)) == part)
            return {x - GetSystemMetrics(SM_CXSIZE) / 4, y};
    }
    throw std::runtime_error("the caption lacks a part");
}

void InstallerScreen::ClickCaption() const {
    User::Click(FindInCaption(HTCAPTION));
}

void InstallerScreen::ClickCloseBox() const {
    User::Click(FindInCaption(HTCLOSE));
}

void InstallerScreen::AwaitEnd() const {
    WaitUntil("the end of the installer window", [this] { return !IsOpen(); });
}
