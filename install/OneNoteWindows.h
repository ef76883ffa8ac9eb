#pragma once

/// Asks every open window of OneNote to close: WM_CLOSE is posted to its top-level window, and nothing waits for the
/// answer. Throws a `_com_error` when an automation call fails; then some or all windows have not been asked.
void CloseOneNoteWindows();
