#pragma once

#include <windows.h>

#include <string>

// OneNote's entries in the registry of the machine, as its setup makes them: classes, type library, interfaces. Both
// return the first failure of Windows; COM must be initialised, and the rights are those of an administrator.

/// COM starts this program with these options from now on.
HRESULT RegisterOneNote(const std::wstring& options);

HRESULT UnregisterOneNote();

/// Whether COM knows OneNote's class.
bool IsRegistered();
