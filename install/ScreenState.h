#pragma once

#include <windows.h>

#include <atomic>
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
    /// Not owned: a text that lives as long as the process (see `LocalizedText`).
    const wchar_t* primaryLabel = L"";
    const wchar_t* secondaryLabel = L"";
    /// The button that gets the focus if it is enabled: 0 the primary one, 1 the secondary one.
    std::int32_t focusIndex = 0;
};

/// The screen of a status: the buttons that it has, with their captions in the loaded language, and the focus, which a
/// screen without buttons leaves at `oldFocusIndex`. Any thread.
ScreenState ScreenStateOf(ScreenStatus status, std::int32_t oldFocusIndex);

/// Tells the installer window to show `PendingScreenState`. Posted by the worker; both parameters are 0.
inline constexpr UINT WM_APPLYSTATE = WM_USER + 0x100;

/// The screen that `WM_APPLYSTATE` shows. The worker fills it and posts; the window's thread fills it only when the
/// worker waits for Retry. It has no lock: a pass that fails right after it began overwrites the record while the
/// window may be applying it. The window then shows fields of both screens for a moment, until the message that follows
/// shows the record whole. No text in it is ever moved or freed.
inline ScreenState PendingScreenState;

// Write and read the record field by field, each in one piece, whatever the other thread does meanwhile. Any thread.

void StorePendingScreenState(const ScreenState& state);
ScreenState LoadPendingScreenState();

/// What the Failed screen shows; null until a pass has failed. The worker sets it before that screen's record.
inline std::atomic<const std::wstring*> ErrorText = nullptr;

/// Makes `text` the `ErrorText`. Earlier ones stay where they are as long as the process lives: the window may be
/// reading one. One thread at a time.
void SetErrorText(std::wstring text);
