#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstddef>

// The program's six fonts, each as one of GDI+ for painting and one of GDI for WM_SETFONT. They and GDI+ live as long
// as the process. What is asked for here must have been made by `StartGraphics`.

/// Starts GDI+ and makes the fonts; where a family is missing, the generic sans-serif one takes its place. Initialises
/// COM on the calling thread. Main thread, once. Reports no failure: with a font that could not be made nothing is
/// drawn.
void StartGraphics();

inline constexpr std::size_t FontCount = 6;

/// 0 the text of the window, "Segoe UI" of 9 points; 1 bold and 2 underlined; 3 of 15 points; 4 "Marlett" of 9 points;
/// 5 "Consolas" of 10. Empty, with its failure as last status, when it could not be made.
const Gdiplus::Font& FontAt(std::size_t index);

/// The same font for GDI. For an empty font it is one that GDI chooses, or null.
HFONT FontHandleAt(std::size_t index);

/// The font of the window and its buttons: `FontHandleAt(0)`.
HFONT ControlFont();
