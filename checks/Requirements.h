#pragma once

/// Writes the head of the log and the report of how OneNote and its add-ins are registered on this machine. When
/// OneNote or Office is registered for 32-bit programs only, it asks the user whether to go on, unless in
/// `UnattendedMode`. False: the user downloads the 32-bit installer instead, and this one shall end. Throws a
/// `_com_error` when the question can't be asked; whatever can't be read is "Not found" in the report. Main thread,
/// once, before the window and a second thread exist.
bool CheckRequirements();
