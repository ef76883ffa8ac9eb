#pragma once

#include "core/RegistryEntry.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Writes one block to the log: the title, a line for each entry with its path and its present value or "Not found",
/// and an empty entry. Nothing is changed, and whatever can't be read is "Not found". Fails only without memory. Any
/// thread.
void WriteRegistryReport(std::wstring_view title, std::vector<RegistryEntry> entries);

/// One value of a registration, relative to the registration's key.
struct RegisteredValue {
    /// Below that key, with a leading backslash, or empty.
    const wchar_t* subkey;
    /// Null is the default value.
    const wchar_t* valueName;
};

// Neither of these reads anything; they fail only without memory. Any thread.

/// Adds the values of a registration under `key` of HKEY_CLASSES_ROOT, in order.
void AddEntries(std::vector<RegistryEntry>& entries, const std::wstring& key, std::span<const RegisteredValue> values);

/// Stands before a key of HKEY_CLASSES_ROOT and names the same key in the 32-bit view.
inline constexpr wchar_t In32BitView[] = L"Wow6432Node\\";

/// The values of a registration under `key` of HKEY_CLASSES_ROOT, natively and then in the 32-bit view.
std::vector<RegistryEntry> EntriesOfBothViews(const std::wstring& key, std::span<const RegisteredValue> values);
