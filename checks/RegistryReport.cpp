#include "checks/RegistryReport.h"

#include "core/Log.h"

void WriteRegistryReport(std::wstring_view title, std::vector<RegistryEntry> entries) {
    Log(true) << title;
    for (RegistryEntry& entry : entries)
        Log(true) << L"    " << entry.PathText() << L" - " << (entry.Read() ? entry.ValueText() : L"Not found");
    Log(true);
}
