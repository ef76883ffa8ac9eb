#include "checks/TypeLibraryBitness.h"

#include "checks/RegistryReport.h"
#include "core/Log.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace {

// The "0" is the neutral locale (LOCALE_NEUTRAL).
constexpr std::array LibraryValues{
    RegisteredValue{L"", nullptr},           RegisteredValue{L"", L"PrimaryInteropAssemblyName"},
    RegisteredValue{L"\\0\\Win32", nullptr}, RegisteredValue{L"\\0\\Win64", nullptr},
    RegisteredValue{L"\\FLAGS", nullptr},
};
// Where the paths stand in the table.
constexpr std::size_t Win32 = 2;
constexpr std::size_t Win64 = 3;

/// The files that are registered for a library, for programs of either kind, in both views of the registry. As the
/// registry has them: mostly with a NUL at the end. Empty when missing.
struct TypeLibFileList {
    std::wstring win32Native;
    std::wstring win64Native;
    std::wstring win32Wow64;
    std::wstring win64Wow64;
};

std::wstring ReadPath(RegistryEntry entry) {
    return entry.Read() ? entry.stringData : std::wstring();
}

TypeLibFileList ReadFileList(const std::vector<RegistryEntry>& entries) {
    constexpr std::size_t Wow64 = LibraryValues.size();
    return {.win32Native = ReadPath(entries[Win32]),
            .win64Native = ReadPath(entries[Win64]),
            .win32Wow64 = ReadPath(entries[Wow64 + Win32]),
            .win64Wow64 = ReadPath(entries[Wow64 + Win64])};
}

void CheckFile(std::wstring path) {
    if (path.size() < 5)
        return;
    // "\3" and a NUL: the library is the resource 3 of the file. Any other number stays, on purpose, and so does a "\3"
    // without its NUL; the file is not found then.
    const std::size_t index = path.size() - 3;
    if (path.compare(index, 2, L"\\3") == 0)
        path.resize(index);
    const bool exists = std::ifstream(std::filesystem::path(path), std::ios::binary).is_open();
    Log(true) << (exists ? L"File exists" : L"Error: File DOES NOT exist") << L": " << path;
}

bool IsX86(const std::wstring& path) {
    return path.find(L"x86") != std::wstring::npos || path.find(L"X86") != std::wstring::npos;
}

std::wstring_view BitnessOf(const std::wstring& path) {
    return IsX86(path) ? L"x86" : L"x64";
}

bool CheckBitness(const TypeLibFileList& files) {
    Log(true);
    Log(true) << L"Checking bitness for this type library";
    Log(true) << L"Win32 Native: " << BitnessOf(files.win32Native) << L' ' << files.win32Native;
    Log(true) << L"Win32 Wow64: " << BitnessOf(files.win32Wow64) << L' ' << files.win32Wow64;
    Log(true) << L"Win64 Native: " << files.win64Native;
    Log(true) << L"Win64 Wow64: " << files.win64Wow64;
    const bool only32Bit = IsX86(files.win32Native) && (IsX86(files.win32Wow64) || files.win32Wow64.empty()) &&
                           files.win64Native.empty() && files.win64Wow64.empty();
    Log(true) << L"Result: " << (only32Bit ? L"x86 detected" : L"x64 detected");
    Log(true);
    return only32Bit;
}

TypeLibFileList ReportVersion(const std::wstring& name, const std::wstring& libId, const std::wstring& version) {
    const std::vector<RegistryEntry> entries =
        EntriesOfBothViews(L"TypeLib\\" + libId + L'\\' + version, LibraryValues);
    WriteRegistryReport(L"Type library for " + name + L" version " + version, entries);
    TypeLibFileList files = ReadFileList(entries);
    for (const auto* path : {&files.win32Native, &files.win64Native, &files.win32Wow64, &files.win64Wow64})
        CheckFile(*path);
    return files;
}

} // namespace

bool CheckTypeLibraryBitness(const std::wstring& name, const std::wstring& libId,
                             const std::vector<std::wstring>& versions, const std::wstring& wanted) {
    bool only32Bit = false;
    for (const std::wstring& version : versions) {
        const TypeLibFileList files = ReportVersion(name, libId, version);
        if (version == wanted)
            only32Bit = CheckBitness(files);
    }
    return only32Bit;
}
