#pragma once

#include <windows.h>

#include <string>

/// One registry key or value: where it is, and its data. No registry view is ever named, so a 64-bit process sees the
/// native one; the 32-bit view is reached through a "Wow6432Node" subkey. Every change is logged before it is made.
/// A plain record without shared state: any thread.
struct RegistryEntry {
    HKEY root = HKEY_CURRENT_USER;
    /// Backslash-separated, without a leading backslash.
    std::wstring subkey = {};
    /// Not owned. Null is the key's default value; for `Delete` it is the whole key.
    const wchar_t* valueName = nullptr;
    /// REG_SZ, REG_EXPAND_SZ and REG_MULTI_SZ data.
    std::wstring stringData = {};
    /// REG_DWORD data.
    DWORD dwordData = 0;
    /// REG_NONE, REG_SZ, REG_EXPAND_SZ, REG_DWORD or REG_MULTI_SZ. `Read` sets it to whatever type it finds.
    DWORD type = REG_NONE;

    /// Creates the key where it is missing and, unless `type` is REG_NONE, sets the value. Strings are stored without a
    /// terminating NUL; a type other than REG_SZ, REG_EXPAND_SZ and REG_DWORD is stored without data. Throws a
    /// `_com_error` with the HRESULT of the call that failed.
    void Write() const;

    /// Reads the value into `type` and `dwordData` or `stringData`. False when it is missing, can't be read or has a
    /// type that the record doesn't hold, which `type` then tells. A NUL that was stored with a string stays in
    /// `stringData` as its last character. Data of another type than REG_DWORD leaves in `dwordData` what fits of it:
    /// who adds flags to a value keeps those bits. Never throws a `_com_error` and logs nothing.
    bool Read();

    /// Deletes the value or, without a `valueName`, the key with all it holds: for an empty `subkey`, all that the root
    /// holds. Never throws a `_com_error`: a missing key or value and every other failure are logged.
    void Delete() const;

    /// "HKCU\Software\...\value", with "@" for the default value.
    std::wstring PathText() const;

    /// "2688 (DWORD)", "text (String)", "text (String expand)"; "<no-value>" for every other type.
    std::wstring ValueText() const;
};

/// "HKCU", "HKLM" or, for every other root, "HKCR": only these three are used.
const wchar_t* RootKeyName(HKEY root);
