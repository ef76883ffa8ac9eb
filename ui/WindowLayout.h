#pragma once

#include <windows.h>

#include <gdiplus.h>

// Where everything in the installer window stands, in device pixels of its client area. Computed from points by
// `Scale`, each term rounded on its own.

Gdiplus::Rect ClientArea();
Gdiplus::Rect LogoArea();

/// The light band at the bottom, behind the buttons.
Gdiplus::Rect ButtonBand();

/// The status text wraps in here, and is cut at its bottom.
Gdiplus::Rect StatusTextBox();

/// The right button.
Gdiplus::Rect PrimaryButtonArea();

/// The left button, of the same size.
Gdiplus::Rect SecondaryButtonArea();
