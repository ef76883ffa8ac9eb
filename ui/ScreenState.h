#pragma once

#include "core/LocalizedStrings.h"

#include <windows.h>

#include <array>
#include <cstdint>
#include <optional>
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
/// worker waits for Retry. Not locked, on purpose: a pass that fails right after it began may overwrite the record
/// while the window applies it, and the message that follows shows it whole.
inline ScreenState PendingScreenState;

/// The status of the screen that was shown last. The window thread's.
inline ScreenStatus CurrentStatus = ScreenStatus::Checking;

/// Fills `PendingScreenState` for a status: the buttons that it has, with their captions in the loaded language, and
/// the focus, which a screen without buttons leaves as it was.
inline void FillPendingScreenState(ScreenStatus status) {
    struct Buttons {
        std::optional<StringId> primary;
        std::optional<StringId> secondary;
        std::optional<std::int32_t> focusIndex;
    };
    static constexpr std::array<Buttons, 4> ByStatus{{
        /* Checking */ {},
        /* Installing */ {},
        /* Failed */ {StrRetry, {}, 0},
        /* Completed */ {StrClose, StrStartOneNote, 1},
    }};
    const auto label = [](std::optional<StringId> id) { return id ? GetLocalizedString(*id) : std::wstring(); };

    const Buttons& buttons = ByStatus.at(static_cast<std::size_t>(status));
    PendingScreenState = {.status = status,
                          .primaryEnabled = buttons.primary.has_value(),
                          .secondaryEnabled = buttons.secondary.has_value(),
                          .primaryLabel = label(buttons.primary),
                          .secondaryLabel = label(buttons.secondary),
                          .focusIndex = buttons.focusIndex.value_or(PendingScreenState.focusIndex)};
}
