#include "checks/ComRegistrationReport.h"

#include "checks/RegistryReport.h"

#include <array>
#include <span>

namespace {

constexpr std::array ProgIdValues{
    RegisteredValue{L"", nullptr},
    RegisteredValue{L"\\CLSID", nullptr},
    RegisteredValue{L"\\CurVer", nullptr},
};

constexpr std::array ClassValues{
    RegisteredValue{L"", nullptr},
    RegisteredValue{L"\\InprocServer32", nullptr},
    RegisteredValue{L"\\InprocServer32", L"ThreadingModel"},
    RegisteredValue{L"\\LocalServer32", nullptr},
    RegisteredValue{L"\\ProgID", nullptr},
    RegisteredValue{L"\\TypeLib", nullptr},
};

constexpr std::array InterfaceValues{
    RegisteredValue{L"", nullptr},
    RegisteredValue{L"\\ProxyStubClsid", nullptr},
    RegisteredValue{L"\\ProxyStubClsid32", nullptr},
    RegisteredValue{L"\\TypeLib", nullptr},
    RegisteredValue{L"\\TypeLib", L"Version"},
};

} // namespace

void ReportProgId(const std::wstring& progId, const std::vector<std::wstring>& versions) {
    std::vector<RegistryEntry> entries;
    AddEntries(entries, progId, ProgIdValues);
    for (const std::wstring& version : versions) // without CurVer, which only the name without a version has
        AddEntries(entries, std::wstring(progId).append(L".").append(version), std::span(ProgIdValues).first(2));
    WriteRegistryReport(L"ProgId for " + progId, entries);
}

void ReportClsid(const std::wstring& name, const std::wstring& clsid) {
    WriteRegistryReport(L"CLSID for " + name, EntriesOfBothViews(L"CLSID\\" + clsid, ClassValues));
}

std::wstring ReportInterface(const std::wstring& name, const std::wstring& iid) {
    std::vector<RegistryEntry> entries = EntriesOfBothViews(L"Interface\\" + iid, InterfaceValues);
    WriteRegistryReport(L"IID for " + name, entries);
    for (const std::size_t lastOfView : {InterfaceValues.size() - 1, entries.size() - 1}) {
        RegistryEntry& version = entries[lastOfView];
        if (version.Read())
            return version.stringData.substr(0, version.stringData.find(L'\0'));
    }
    return {};
}
