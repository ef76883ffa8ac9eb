#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <memory>

/// The logo that the window shows. Null in unattended mode, and when there was no memory for it. Lives as long as the
/// process. Main thread.
inline std::unique_ptr<Gdiplus::Bitmap> LogoBitmap;

/// Decodes the logo embedded in the executable into `LogoBitmap`, which replaces an earlier one. Throws a `_com_error`
/// when the resource can't be read; an image that GDI+ can't decode is only empty. Main thread, after `StartGraphics`.
void LoadLogo();
