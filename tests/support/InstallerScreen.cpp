#include "tests/support/InstallerScreen.h"

#include "app/ProcessState.h"
#include "tests/support/Layouts.h"
#include "tests/support/User.h"
#include "tests/support/Watchdog.h"
#include "ui/Painting.h"

#include <array>
#include <gtest/gtest.h>

namespace {

/// Waits until `condition` holds.
template <typename Condition>
void Await(const char* what, Condition condition) {
    const Watchdog::Waiting waiting(what);
    while (!condition())
        Sleep(20);
}

HWND AwaitButton(HWND window, const Gdiplus::Rect& area) {
    HWND button = nullptr;
    Await("a button of the front-end", [&] {
        const POINT middle{area.X + area.Width / 2, area.Y + area.Height / 2};
        button = ChildWindowFromPointEx(window, middle, CWP_ALL);
        return button != nullptr && button != window;
    });
    return button;
}

HWND FocusOf(HWND window) {
    GUITHREADINFO information{};
    information.cbSize = sizeof information;
    GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &information);
    return information.hwndFocus;
}

/// A button without a caption is one that nobody sees.
bool HasCaption(HWND button, const std::wstring& caption) {
    if (caption.empty())
        return !IsWindowVisible(button);
    return IsWindowVisible(button) && IsWindowEnabled(button) && CaptionOf(button) == caption;
}

} // namespace

std::wstring CaptionOf(HWND button) {
    std::array<wchar_t, 256> text{};
    DWORD_PTR length = 0;
    SendMessageTimeoutW(button, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_NORMAL, 5000,
                        &length);
    return {text.data(), length};
}

InstallerScreen::InstallerScreen(const Program& frontEnd)
    : window_(AwaitWindow(frontEnd, L"WC_VELLUMKIT_INSTALLER")), primary_(AwaitButton(window_, LayoutHere().primary)),
      secondary_(AwaitButton(window_, LayoutHere().secondary)) {}

bool InstallerScreen::Shows(ScreenStatus status, const Picture& painted) const {
    FillPendingScreenState(status);
    const Gdiplus::Rect aboveTheButtons(0, 0, painted.width, LayoutHere().primary.Y);
    return HasCaption(primary_, PendingScreenState.primaryLabel) &&
           HasCaption(secondary_, PendingScreenState.secondaryLabel) &&
           Cut(User::LookAt(window_), aboveTheButtons) == Cut(painted, aboveTheButtons);
}

void InstallerScreen::Await(ScreenStatus status) const {
    const Picture painted = PictureOf(*RenderScreen(status));
    ::Await("a state of the installer window", [&] { return Shows(status, painted); });
}

void InstallerScreen::AwaitFailure(const std::wstring& errorText) const {
    ErrorText = GetLocalizedString(StrInstallFailed) + L"\n\n" + errorText;
    Await(ScreenStatus::Failed);
}

void InstallerScreen::AwaitFocus(HWND window) const {
    ::Await("the focus", [&] { return GetForegroundWindow() == window_ && FocusOf(window_) == window; });
}

void InstallerScreen::Activate() const {
    SetForegroundWindow(window_);
    ::Await("the installer window in front", [&] { return GetForegroundWindow() == window_; });
}

void InstallerScreen::ClickCloseBox() const {
    RECT area{};
    GetWindowRect(window_, &area);
    const LONG y = area.top + GetSystemMetrics(SM_CYCAPTION) / 2 + GetSystemMetrics(SM_CYFIXEDFRAME);
    for (LONG x = area.right - 1; x > area.left; --x) {
        if (SendMessageW(window_, WM_NCHITTEST, 0, MAKELPARAM(x, y)) == HTCLOSE) {
            const POINT box{x - GetSystemMetrics(SM_CXSIZE) / 4, y};
            User::MouseDown(box);
            User::MouseUp(box);
            return;
        }
    }
    ADD_FAILURE() << "there is no close box";
}

void InstallerScreen::AwaitEnd() const {
    ::Await("the end of the installer window", [this] { return !IsOpen(); });
}
