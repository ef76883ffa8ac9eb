#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <ostream>

/// The installer window in pixels, worked out by hand from its lengths in points.
struct Layout {
    int pixelsPerInch = 0;
    Gdiplus::Rect client;
    Gdiplus::Rect logo;
    Gdiplus::Rect band;
    Gdiplus::Rect text;
    Gdiplus::Rect primary;
    Gdiplus::Rect secondary;
    /// The height of the font.
    int font = 0;
};

/// The layout for the resolution that VELLUMKIT_DPI asks for (default: 96). Ends the program when it has no layout or
/// the screen has another resolution.
const Layout& LayoutHere();

namespace Gdiplus {

bool operator==(const Rect& left, const Rect& right);
std::ostream& operator<<(std::ostream& stream, const Rect& rectangle);

} // namespace Gdiplus

/// A Windows rectangle as one of GDI+.
Gdiplus::Rect Area(const RECT& rectangle);

/// Where a child stands in its window's client area.
Gdiplus::Rect AreaWithin(HWND window, HWND child);
