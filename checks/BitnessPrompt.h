#pragma once

/// Asks in a task dialog whether to go on although OneNote looks like the 32-bit edition. The answers are: open the
/// download of the 32-bit installer in the browser; go on; open a help page in the browser and ask again.
/// True: go on, also when the dialog was closed otherwise. False: the download was chosen. Whether the browser opened
/// is not looked at. Throws a `_com_error` when there can be no dialog: with the HRESULT of TaskDialogIndirect, or
/// where the common controls lack that function, with why it was not found. Main thread, which dispatches messages
/// meanwhile; COM is initialised.
bool ConfirmBitness();
