#pragma once

#include "install/ScreenState.h"

#include <windows.h>

#include <gdiplus.h>

#include <memory>

/// Renders everything that the installer window shows in this state but its buttons: the logo (`LogoBitmap`), the
/// button band, and the status text in the loaded language, for `Failed` the `ErrorText`. The image is as large as the
/// window's client area. A value that is no `ScreenStatus` has no text; a missing logo or font leaves its place empty.
/// Null without memory for it. No other failure is reported either, and nothing is thrown. Main thread.
std::unique_ptr<Gdiplus::Bitmap> RenderScreen(ScreenStatus status);
