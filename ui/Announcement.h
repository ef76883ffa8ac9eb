#pragma once

#include <windows.h>

#include <string_view>

// What a window paints, for those who hear it: a screen reader finds no text in pixels. The window's thread, with COM
// initialised in a single-threaded apartment. Where Windows has no such service, or it fails, nothing happens.

/// Makes the text, in one line of at most 1023 characters, the accessible name of the window's client area and has
/// screen readers read it, wherever the focus is. Title and messages of the window stay as they are.
void Announce(HWND window, std::wstring_view text) noexcept;

/// Takes everything back that `Announce` has attached to the window. To be called before the window is gone.
void ForgetAnnouncement(HWND window) noexcept;
