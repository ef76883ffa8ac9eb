#pragma once

/// From now on what Windows calls a critical error, as an empty drive, fails a call of this thread instead of showing a
/// message box. The mode of the process stays as it is: the elevated installer would inherit it.
void SuppressCriticalErrorBoxes();
