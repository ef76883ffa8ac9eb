#pragma once

#include <string>

// OneNote's entries in the registry of the machine, as its setup makes them: classes, type library, interfaces. COM
// must be initialised. Changes take an administrator's rights, and throw the `_com_error` of the first that fails.

/// COM starts this program with these options from now on.
void RegisterOneNote(const std::wstring& options);

/// Succeeds also where some of the entries or all of them are missing.
void UnregisterOneNote();

/// Whether COM knows OneNote's class.
bool IsRegistered();
