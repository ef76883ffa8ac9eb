#pragma once

/// Starts OneNote or connects to the running one, opens a window if it has none, and brings its current window to the
/// front. Returns when OneNote has answered all that. A failure is logged and not reported: throws no `_com_error`.
/// On a thread that has COM initialised.
void StartOneNote();
