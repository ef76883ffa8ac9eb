#pragma once

/// From now on a library that is loaded by its bare name, by Windows too, is searched for in the system folder only,
/// and none in the current directory. A Windows 7 without the update that limits the search only leaves out the current
/// directory. Processes that this one starts leave it out too. No failure is reported. Main thread, before anything
/// loads a library.
void LimitLibrarySearch();

/// Loads what the libraries of a window or of a task dialog load by themselves when they need it. A Windows without
/// that update would search for it beside the program first, and so does Wine. No failure is reported. Main thread,
/// before there is either.
void LoadLibrariesOfWindows();
