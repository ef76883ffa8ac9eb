#pragma once

// The window's lengths are given in points (1/72 inch) and become device pixels here. Screen resolution is asked for
// once, by the first call on each axis, and holds for the process; where the screen tells none it is 96 DPI
// (USER_DEFAULT_SCREEN_DPI). Any thread.

/// Pixels per point across, as the screen gives them (LOGPIXELSX / 72): 1.333 at 96 DPI.
float ScaleFactor();

/// The same down the screen (LOGPIXELSY / 72); font sizes use it.
float VerticalScaleFactor();

/// Pixels for a length of `points` (not negative), rounded to the nearest. Each term of a sum is rounded on its own.
int Scale(float points);

/// The same by `VerticalScaleFactor`.
int VerticalScale(float points);
