#pragma once

#include <windows.h>

#include <gdiplus.h>

// The window's font, "Segoe UI" of 9 points, as one of GDI+ for painting and one of GDI for WM_SETFONT. Both and GDI+
// live as long as the process. Main thread.

/// Starts GDI+. Initialises COM on the calling thread. Called once. Reports no failure: nothing is drawn then.
void StartGraphics();

/// Makes the fonts; without "Segoe UI" the generic sans-serif family takes its place. Only for a window, and before
/// there is one: GDI+ looks at every installed font. After `StartGraphics`, once. Reports no failure: with a font that
/// could not be made nothing is drawn.
void MakeFonts();

// After `MakeFonts`.

/// The font of the status text. Empty, with its failure as last status, when it could not be made.
const Gdiplus::Font& StatusFont();

/// The font of the window and its buttons: the same for GDI. For an empty status font it is one that GDI chooses, or
/// null.
HFONT ControlFont();
