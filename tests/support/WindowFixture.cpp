#include "tests/support/WindowFixture.h"

#include "core/Launch.h"
#include "core/LocalizedStrings.h"
#include "install/ScreenState.h"
#include "install/WorkerSignals.h"
#include "tests/support/Layouts.h"
#include "tests/support/User.h"
#include "ui/InstallerWindow.h"
#include "ui/Logo.h"
#include "ui/Painting.h"

namespace {

void DispatchAll() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        if (message.message != WM_QUIT)
            DispatchMessageW(&message);
}

} // namespace

void WindowFixture::SetUp() {
    InstanceHandle = GetModuleHandleW(nullptr);
    LoadLocalizedStrings(L"en");
    SetErrorText(L"Some error");
    continue_.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    ContinueEvent = continue_.Get();
    LoadLogo();
    CurrentStatus = ScreenStatus::Checking;
    PendingScreenState = {};
    ASSERT_TRUE(CreateInstallerWindow());
    DispatchAll();
}

void WindowFixture::TearDown() {
    DestroyWindow(MainWindow);
    DispatchAll();
    MainWindow = PrimaryButton = SecondaryButton = nullptr;
    LogoBitmap.reset();
    ContinueEvent = nullptr;
    PendingScreenState = {};
    CurrentStatus = ScreenStatus::Checking;
    ErrorText = nullptr;
}

void WindowFixture::Show(ScreenStatus status) {
    PendingScreenState = ScreenStateOf(status, PendingScreenState.focusIndex);
    PostMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
    DispatchAll();
    EXPECT_EQ(CurrentStatus, status);
}

void WindowFixture::SendClick(HWND button, WORD notification, WORD id) {
    SendMessageW(MainWindow, WM_COMMAND, MAKEWPARAM(id, notification), reinterpret_cast<LPARAM>(button));
}

void WindowFixture::ExpectOnScreen(ScreenStatus status) {
    const Gdiplus::Rect aboveTheButtons(0, 0, LayoutHere().client.Width, LayoutHere().primary.Y);
    const Picture painted = Cut(PictureOf(*RenderScreen(status)), aboveTheButtons);
    Picture seen;
    const ULONGLONG end = GetTickCount64() + 30000;
    do {
        GdiFlush();
        Sleep(50);
        DispatchAll();
        seen = Cut(User::LookAt(MainWindow), aboveTheButtons);
    } while (seen != painted && GetTickCount64() < end);
    EXPECT_TRUE(SamePixels(seen, painted));
}
