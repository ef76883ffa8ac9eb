#include "checks/RegistryReport.h"

#include "core/Log.h"

void WriteRegistryReport(std::wstring_view title, std::vector<RegistryEntry> entries) {
    Log(true) << title;
    for (RegistryEntry& entry : entries)
        Log(true) << L"    " << entry.PathText() << L" - " << (entry.Read() ? entry.ValueText() : L"Not found");
    Log(true);
}

void AddEntries(std::vector<RegistryEntry>& entries, const std::wstring& key, std::span<const RegisteredValue> values) {
    for (const RegisteredValue& value : values)
        entries.push_back({.root = HKEY_CLASSES_ROOT, .subkey = key + value.subkey, .valueName = value.valueName});
}

std::vector<RegistryEntry> EntriesOfBothViews(const std::wstring& key, std::span<const RegisteredValue> values) {
    std::vector<RegistryEntry> entries;
    AddEntries(entries, key, values);
    AddEntries(entries, In32BitView + key, values);
    return entries;
}
