#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

/// What the installer window shows under its logo.
enum class ScreenStatus : std::int32_t {
    Checking,
    Installing,
    Failed,
    Completed,
};

/// One screen of the installer window. A button is visible exactly when it is enabled.
struct ScreenState {
    ScreenStatus status = ScreenStatus::Checking;
    bool primaryEnabled = false;
    bool secondaryEnabled = false;
    std::wstring primaryLabel = {};
    std::wstring secondaryLabel = {};
    /// The button that gets the focus if it is enabled: 0 the primary one, 1 the secondary one.
    std::int32_t focusIndex = 0;
};

/// Tells the installer window to show `PendingScreenState`. Posted by the worker; both parameters are 0.
inline constexpr UINT WM_APPLYSTATE = WM_USER + 0x100;

/// The screen that `WM_APPLYSTATE` shows. The worker fills it and posts; the window thread fills it only when the
/// worker waits for Retry. So it has no lock.
inline ScreenState PendingScreenState;
