#pragma once

#include <windows.h>

#include <string>

// OneNote's entries in the registry of the machine, as its setup makes them: classes, type library, interfaces. COM
// must be initialised. Changes take an administrator's rights, and return the first failure of Windows.

/// COM starts this program with these options from now on.
HRESULT RegisterOneNote(const std::wstring& options);

/// Also where a part of them, or all, is missing.
HRESULT UnregisterOneNote();

/// Whether COM knows OneNote's class.
bool IsRegistered();
