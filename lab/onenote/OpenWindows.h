#pragma once

#include <windows.h>

#include <vector>

/// Opens one more window of OneNote, perhaps embedded in a frame. It stands behind all others and does not take the
/// focus: bringing it to the front is left to others.
void OpenWindow();

/// Whether a window of this process is open.
bool HasWindows();

/// The windows of every OneNote on the desktop, in the order in which they were opened: those that may be embedded.
std::vector<HWND> WindowsInOrder();

/// The one of them that is in front of the others; null when there is none.
HWND CurrentWindow();
