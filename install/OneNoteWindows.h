#pragma once

/// Asks every open window of OneNote to close: WM_CLOSE is posted to its top-level window, and nothing waits for the
/// answer. Throws the `_com_error` of an automation call that fails, with the description that OneNote gave, and
/// E_POINTER for an object that is null; then some or all windows have not been asked. On a thread that has COM
/// initialised.
void CloseOneNoteWindows();
