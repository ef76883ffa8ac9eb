#include "checks/TypeLibraryBitness.h"

#include "checks/RegistryReport.h"
#include "core/Log.h"
#include "core/Unique.h"

#include <array>
#include <string_view>

namespace {

// Where a library's files stand. The "0" is the neutral locale (LOCALE_NEUTRAL).
constexpr wchar_t Win32[] = L"\\0\\Win32";
constexpr wchar_t Win64[] = L"\\0\\Win64";

constexpr std::array LibraryValues{
    RegisteredValue{L"", nullptr},        RegisteredValue{L"", L"PrimaryInteropAssemblyName"},
    RegisteredValue{Win32, nullptr},      RegisteredValue{Win64, nullptr},
    RegisteredValue{L"\\FLAGS", nullptr},
};

std::wstring ReadPath(const std::wstring& key) {
    RegistryEntry entry{.root = HKEY_CLASSES_ROOT, .subkey = key};
    return entry.Read() ? entry.stringData : std::wstring();
}

TypeLibFileList ReadFileList(const std::wstring& key) {
    return {.win32Native = ReadPath(key + Win32),
            .win64Native = ReadPath(key + Win64),
            .win32Wow64 = ReadPath(In32BitView + key + Win32),
            .win64Wow64 = ReadPath(In32BitView + key + Win64)};
}

/// Whether the file can be opened for reading, shared as the runtime library shares what it opens. A registration may
/// name a pipe instead: its server doesn't get to act as the user.
bool CanBeRead(const std::wstring& path) {
    const UniqueHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS, nullptr));
    return static_cast<bool>(file);
}

void CheckFile(std::wstring path) {
    if (path.size() < 5)
        return;
    // OneNote's library is resource 3 of its program: its path ends in "\3" and a NUL, which are no part of the file's
    // name and are cut off. What stands behind the "\3" is not looked at, so a "\32" without its NUL is cut off too.
    // Any other number stays, and such a file is not found.
    const std::size_t last3 = path.size() - 3;
    if (path.compare(last3, 2, L"\\3") == 0)
        path.resize(last3);
    const bool exists = CanBeRead(path); // before the entry begins, since a dead server takes its time
    Log(true) << (exists ? L"File exists" : L"Error: File DOES NOT exist") << L": " << path;
}

bool IsX86(const std::wstring& path) {
    return path.find(L"x86") != std::wstring::npos || path.find(L"X86") != std::wstring::npos;
}

std::wstring_view BitnessOf(const std::wstring& path) {
    return IsX86(path) ? L"x86" : L"x64";
}

bool ReportBitness(const TypeLibFileList& files) {
    Log(true);
    Log(true) << L"Checking bitness for this type library";
    Log(true) << L"Win32 Native: " << BitnessOf(files.win32Native) << L' ' << files.win32Native;
    Log(true) << L"Win32 Wow64: " << BitnessOf(files.win32Wow64) << L' ' << files.win32Wow64;
    Log(true) << L"Win64 Native: " << files.win64Native;
    Log(true) << L"Win64 Wow64: " << files.win64Wow64;
    const bool only32Bit = IsFor32BitOnly(files);
    Log(true) << L"Result: " << (only32Bit ? L"x86 detected" : L"x64 detected");
    Log(true);
    return only32Bit;
}

TypeLibFileList ReportVersion(const std::wstring& name, const std::wstring& libId, const std::wstring& version) {
    const std::wstring key = L"TypeLib\\" + libId + L'\\' + version;
    WriteRegistryReport(L"Type library for " + name + L" version " + version, EntriesOfBothViews(key, LibraryValues));
    TypeLibFileList files = ReadFileList(key);
    for (const auto* path : {&files.win32Native, &files.win64Native, &files.win32Wow64, &files.win64Wow64})
        CheckFile(*path);
    return files;
}

} // namespace

bool IsFor32BitOnly(const TypeLibFileList& files) {
    return IsX86(files.win32Native) && (IsX86(files.win32Wow64) || files.win32Wow64.empty()) &&
           files.win64Native.empty() && files.win64Wow64.empty();
}

bool CheckTypeLibraryBitness(const std::wstring& name, const std::wstring& libId,
                             const std::vector<std::wstring>& versions, const std::wstring& wanted) {
    bool only32Bit = false;
    for (const std::wstring& version : versions) {
        const TypeLibFileList files = ReportVersion(name, libId, version);
        if (version == wanted)
            only32Bit = ReportBitness(files);
    }
    return only32Bit;
}
