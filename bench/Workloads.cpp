// Does one piece of the product's work and prints how many milliseconds it took.
//
//     workloads write FILE MEGABYTES        writes random bytes to a new file, as the payload is written
//     workloads single-write FILE MEGABYTES the same bytes with one call of Windows: the limit
//     workloads compare PROGRAM             compares the payload of a front-end with what was written of it
//     workloads log COUNT                   writes entries to the log
//     workloads report                      reports the registrations of OneNote and Office
//     workloads find                        looks for OneNote among the running processes
//
// and for these measurements:
//
//     workloads add-neighbours COUNT        makes so many keys beside each of those that the report reads
//     workloads remove-neighbours COUNT     removes them
//     workloads crowd COUNT                 has so many processes run until its input ends; says when they are there

#include "bench/Stopwatch.h"
#include "checks/Requirements.h"
#include "core/Launch.h"
#include "core/Log.h"
#include "install/OneNoteProcess.h"
#include "install/Payload.h"
#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <comdef.h>
#include <psapi.h>
#include <shellapi.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// Random, so that no file system can compress them.
std::vector<char> RandomBytes(std::size_t megabytes) {
    std::vector<char> bytes(megabytes << 20);
    std::mt19937_64 random(megabytes);
    for (std::size_t at = 0; at < bytes.size(); at += sizeof(std::uint64_t)) {
        const std::uint64_t number = random();
        std::memcpy(&bytes[at], &number, sizeof number);
    }
    return bytes;
}

double TimeWrite(const std::wstring& file, std::size_t megabytes) {
    const std::vector<char> bytes = RandomBytes(megabytes);
    bool whole = false;
    const Stopwatch stopwatch;
    WriteBytesToFile(file, bytes, &whole);
    return whole ? stopwatch.Milliseconds() : -1;
}

double TimeSingleWrite(const std::wstring& file, std::size_t megabytes) {
    const std::vector<char> bytes = RandomBytes(megabytes);
    const Stopwatch stopwatch;
    UniqueHandle target(
        CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    WriteFile(target.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    target.Reset();
    return written == bytes.size() ? stopwatch.Milliseconds() : -1;
}

/// Set when the file is opened to be compared, until the shell is asked to start it.
Stopwatch Comparison;
double ComparisonTime = -1;
decltype(&CreateFileW) OriginalCreateFile = nullptr;

HANDLE WINAPI NoteOpening(LPCWSTR name, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                          DWORD flags, HANDLE pattern) {
    Comparison = Stopwatch();
    return OriginalCreateFile(name, access, sharing, security, disposition, flags, pattern);
}

BOOL WINAPI RefuseToStart(SHELLEXECUTEINFOW* /*execution*/) {
    ComparisonTime = Comparison.Milliseconds();
    SetLastError(ERROR_CANCELLED);
    return FALSE;
}

/// The comparison has no name of its own: it is what happens between the last opening of a file and the start.
double TimeComparison(const wchar_t* program) {
    InstanceHandle = LoadLibraryExW(program, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    OriginalCreateFile = ImportedNow<decltype(CreateFileW)>("CreateFileW");
    const ImportPatch<decltype(CreateFileW)> opening("CreateFileW", NoteOpening);
    const ImportPatch<decltype(ShellExecuteExW)> start("ShellExecuteExW", RefuseToStart);
    try {
        ExtractAndRunInstaller();
    } catch (const _com_error&) { // the refused start
    }
    return ComparisonTime;
}

double TimeLog(int count) {
    Log(true) << L"The first entry opens the file";
    const Stopwatch stopwatch;
    for (int entry = 0; entry < count; ++entry)
        Log(true) << L"Entry " << entry << L" of a log that is written to the disk at each of them";
    return stopwatch.Milliseconds();
}

double TimeReport() {
    UnattendedMode = true; // no question
    Log(true);
    const Stopwatch stopwatch;
    CheckRequirements();
    return stopwatch.Milliseconds();
}

double TimeSearch() {
    Log(true);
    const Stopwatch stopwatch;
    const UniqueHandle found = FindOneNoteProcess();
    return found ? -1 : stopwatch.Milliseconds();
}

LSTATUS AddKey(const wchar_t* path) {
    UniqueRegistryKey key;
    return RegCreateKeyExW(HKEY_CLASSES_ROOT, path, 0, nullptr, 0, KEY_WRITE, nullptr, key.Receive(), nullptr);
}

LSTATUS RemoveKey(const wchar_t* path) {
    return RegDeleteKeyW(HKEY_CLASSES_ROOT, path);
}

/// Beside the keys of classes, interfaces and type libraries, in both views where there are two.
bool ForEachNeighbour(int count, LSTATUS (*change)(const wchar_t* path)) {
    constexpr std::array Parents{L"CLSID", L"Interface", L"TypeLib", L"Wow6432Node\\CLSID", L"Wow6432Node\\Interface"};
    for (const wchar_t* const parent : Parents) {
        for (int number = 0; number < count; ++number) {
            std::array<wchar_t, 128> path{};
            std::swprintf(path.data(), path.size(), L"%ls\\{%08X-0000-4000-8000-000000000000}", parent,
                          static_cast<unsigned>(number) * 858'993U);
            if (change(path.data()) != ERROR_SUCCESS)
                return false;
        }
    }
    return true;
}

std::size_t CountProcesses() {
    std::array<DWORD, 4096> ids{};
    DWORD bytes = 0;
    EnumProcesses(ids.data(), sizeof ids, &bytes);
    return bytes / sizeof(DWORD);
}

/// Suspended, they cost memory and nothing else, and the search can't tell.
bool KeepCrowd(std::size_t count) {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr); // ends with this process, and all of the crowd with it
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    while (CountProcesses() < count) {
        std::wstring commandLine = L"winver.exe";
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION member{};
        if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                            &startup, &member))
            return false;
        AssignProcessToJobObject(job, member.hProcess);
        CloseHandle(member.hThread);
        CloseHandle(member.hProcess);
    }
    std::printf("%zu\n", CountProcesses());
    std::fflush(stdout);
    std::getchar();
    return true;
}

} // namespace

int main() {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count < 2)
        return 2;
    const std::wstring_view command = arguments[1];
    const wchar_t* const first = count > 2 ? arguments[2] : L"";
    const int number = _wtoi(arguments[count - 1]);
    double time = -1;
    if (command == L"write")
        time = TimeWrite(first, static_cast<std::size_t>(number));
    else if (command == L"single-write")
        time = TimeSingleWrite(first, static_cast<std::size_t>(number));
    else if (command == L"compare")
        time = TimeComparison(first);
    else if (command == L"log")
        time = TimeLog(number);
    else if (command == L"report")
        time = TimeReport();
    else if (command == L"find")
        time = TimeSearch();
    else if (command == L"add-neighbours")
        return ForEachNeighbour(number, AddKey) ? 0 : 1;
    else if (command == L"remove-neighbours")
        return ForEachNeighbour(number, RemoveKey) ? 0 : 1;
    else if (command == L"crowd")
        return KeepCrowd(static_cast<std::size_t>(number)) ? 0 : 1;
    if (time < 0)
        return 2;
    std::printf("%.3f\n", time);
    return 0;
}
