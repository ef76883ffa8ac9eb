#include "ui/InstallerWindow.h"

#include "core/Launch.h"
#include "core/LocalizedStrings.h"
#include "core/Product.h"
#include "install/OneNoteStart.h"
#include "install/WorkerSignals.h"
#include "ui/Announcement.h"
#include "ui/Fonts.h"
#include "ui/Painting.h"
#include "ui/StatusText.h"
#include "ui/WindowLayout.h"

namespace {

constexpr wchar_t WindowClass[] = L"WC_VELLUMKIT_INSTALLER";
constexpr DWORD WindowStyle = WS_VISIBLE | WS_CLIPCHILDREN | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;

/// The control that had the focus when the window was last deactivated.
HWND SavedFocus = nullptr;

void ApplyButton(HWND button, bool enabled, const wchar_t* label, bool focused) {
    EnableWindow(button, enabled);
    ShowWindow(button, enabled ? SW_SHOW : SW_HIDE);
    SetWindowTextW(button, label);
    if (focused && enabled)
        SetFocus(button);
}

void Retry() {
    const ScreenState checking = ScreenStateOf(ScreenStatus::Checking, LoadPendingScreenState().focusIndex);
    StorePendingScreenState(checking);
    ApplyScreenState(checking);
    SetEvent(ContinueEvent);
}

void OnDestroy(HWND window) {
    PostQuitMessage(0); // first: whatever the service does, the message loop ends
    ForgetAnnouncement(window);
}

void OnActivate(WPARAM wParam) {
    if (LOWORD(wParam) == WA_INACTIVE)
        SavedFocus = GetFocus();
}

void OnSetFocus() {
    if (SavedFocus != nullptr)
        SetFocus(SavedFocus);
}

void OnPaint(HWND window) {
    PAINTSTRUCT paint;
    const HDC context = BeginPaint(window, &paint);
    if (context == nullptr)
        return; // DefWindowProc validates the window
    {
        Gdiplus::Graphics graphics(context);
        RECT client{};
        GetClientRect(window, &client);
        const auto image = RenderScreen(CurrentStatus);
        graphics.DrawImage(image.get(), INT{client.left}, INT{client.top}, INT{client.right - client.left},
                           INT{client.bottom - client.top});
    }
    EndPaint(window, &paint);
}

void OnPrimaryButton() {
    if (CurrentStatus == ScreenStatus::Failed)
        Retry();
    else if (CurrentStatus == ScreenStatus::Completed)
        DestroyWindow(MainWindow);
}

void OnSecondaryButton() {
    if (CurrentStatus != ScreenStatus::Completed)
        return;
    StartOneNote();
    DestroyWindow(MainWindow);
}

void OnCommand(WPARAM wParam, LPARAM lParam) {
    if (HIWORD(wParam) != BN_CLICKED)
        return;
    const HWND control = reinterpret_cast<HWND>(lParam); // the buttons have no id to tell them by
    if (control == PrimaryButton)
        OnPrimaryButton();
    else if (control == SecondaryButton)
        OnSecondaryButton();
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case WM_DESTROY:
        OnDestroy(window);
        break;
    case WM_ACTIVATE:
        OnActivate(wParam);
        break;
    case WM_SETFOCUS:
        OnSetFocus();
        break;
    case WM_PAINT:
        OnPaint(window);
        break;
    case WM_COMMAND:
        OnCommand(wParam, lParam);
        break;
    case WM_APPLYSTATE:
        ApplyScreenState(LoadPendingScreenState());
        break;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

HICON LoadApplicationIcon(int widthMetric, int heightMetric) {
    return static_cast<HICON>(LoadImageW(InstanceHandle, MAKEINTRESOURCEW(ApplicationIcon), IMAGE_ICON,
                                         GetSystemMetrics(widthMetric), GetSystemMetrics(heightMetric), 0));
}

void RegisterWindowClass() {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = WindowProcedure;
    description.hInstance = InstanceHandle;
    // The icons live as long as the class: to the end of the process.
    description.hIcon = LoadApplicationIcon(SM_CXICON, SM_CYICON);
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.lpszClassName = WindowClass;
    description.hIconSm = LoadApplicationIcon(SM_CXSMICON, SM_CYSMICON);
    RegisterClassExW(&description); // no background brush: the window paints every pixel
}

/// The window's place and outer size, in the middle of the desktop.
Gdiplus::Rect WindowArea() {
    const Gdiplus::Rect client = ClientArea();
    RECT outer{0, 0, client.Width, client.Height};
    AdjustWindowRectEx(&outer, WindowStyle, FALSE, 0);
    const LONG width = outer.right - outer.left;
    const LONG height = outer.bottom - outer.top;
    RECT desktop{};
    GetWindowRect(GetDesktopWindow(), &desktop);
    return {(desktop.right - width - desktop.left) / 2, (desktop.bottom - height - desktop.top) / 2, width, height};
}

void SetControlFont(HWND window) {
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(ControlFont()), FALSE);
}

HWND CreateButton(StringId caption, const Gdiplus::Rect& area) {
    const HWND button = CreateWindowExW(0, L"Button", LocalizedText(caption), WS_CHILD | WS_TABSTOP, area.X, area.Y,
                                        area.Width, area.Height, MainWindow, nullptr, InstanceHandle, nullptr);
    SetControlFont(button);
    return button;
}

} // namespace

void ApplyScreenState(const ScreenState& state) {
    const bool changed = state.status != CurrentStatus;
    CurrentStatus = state.status;
    ApplyButton(PrimaryButton, state.primaryEnabled, state.primaryLabel, state.focusIndex == 0);
    ApplyButton(SecondaryButton, state.secondaryEnabled, state.secondaryLabel, state.focusIndex == 1);
    InvalidateRect(MainWindow, nullptr, FALSE);
    if (changed) // a message may come twice, and what was read is not read again
        Announce(MainWindow, StatusText(CurrentStatus));
}

bool CreateInstallerWindow() {
    RegisterWindowClass();
    const Gdiplus::Rect area = WindowArea();
    MainWindow = CreateWindowExW(0, WindowClass, L"Vellumkit", WindowStyle, area.X, area.Y, area.Width, area.Height,
                                 nullptr, nullptr, InstanceHandle, nullptr);
    if (MainWindow == nullptr)
        return false;
    SetControlFont(MainWindow);
    PrimaryButton = CreateButton(StrRetry, PrimaryButtonArea());
    SecondaryButton = CreateButton(StrGetHelp, SecondaryButtonArea()); // the captions are never seen
    ShowWindow(MainWindow, SW_SHOW);
    Announce(MainWindow, StatusText(CurrentStatus)); // behind the frame: the service takes its time
    return true;
}

int RunMessageLoop() {
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) != 0) { // -1, a failure, does not end the loop
        if (!IsDialogMessageW(MainWindow, &message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return static_cast<int>(message.wParam);
}
