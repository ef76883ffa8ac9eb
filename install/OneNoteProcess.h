#pragma once

#include "core/Unique.h"

/// Finds the first running process, in the order in which Windows lists them, whose image is onenote.exe or the maker's
/// calendar datebk.exe, in any letter case. Only the first 1,024 processes are looked at; one that can't be opened or
/// named never matches. Returns a handle for waiting, querying and terminating, or none.
/// Throws a `_com_error` with E_UNEXPECTED when the processes can't be listed.
UniqueHandle FindOneNoteProcess();

/// Waits until the process that `FindOneNoteProcess` finds has ended: 5 seconds for it to end by itself, 50 after
/// asking OneNote's windows to close, 50 after terminating it. Each wait is twice as long with `DelayOption`; the later
/// ones are as short as the first when the windows can't be asked. True when the process has ended or there was none.
/// Throws what `FindOneNoteProcess` throws. Initialises COM on the calling thread (single-threaded apartment).
bool WaitForOneNoteToExit();
