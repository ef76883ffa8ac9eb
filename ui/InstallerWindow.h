#pragma once

#include "install/ScreenState.h"

#include <windows.h>

// The installer window and what it knows: the window's thread only.

/// Its right button and its left one. Null until they are created, and when they can't be; they keep their values when
/// the window is gone.
inline HWND PrimaryButton = nullptr;
inline HWND SecondaryButton = nullptr;

/// The status of the screen that was shown last.
inline ScreenStatus CurrentStatus = ScreenStatus::Checking;

/// Creates and shows `MainWindow`, and in it `PrimaryButton` and `SecondaryButton`, hidden until a state shows them.
/// False when the window can't be created; a button that can't be is null. Main thread, after `MakeFonts` and
/// `LoadLogo`.
///
/// The window applies `PendingScreenState` on WM_APPLYSTATE, and acts on its buttons by `CurrentStatus`: Retry shows
/// `Checking` and signals `ContinueEvent`, Close destroys the window, Start OneNote calls `StartOneNote` and destroys
/// the window, whatever that achieved. Its close box destroys it in every state. Its destruction posts WM_QUIT.
bool CreateInstallerWindow();

/// Shows a state on the window: its status becomes `CurrentStatus`, which the next painting shows; the buttons get
/// their captions, and only the enabled ones are visible; the enabled one of `focusIndex` gets the focus. The window's
/// thread only.
void ApplyScreenState(const ScreenState& state);

/// Dispatches the thread's messages until WM_QUIT, and returns its exit code. Tab, Space and the mnemonics work as in a
/// dialog box.
int RunMessageLoop();
