// Does one piece of the product's work and prints how many milliseconds it took.
//
//     workloads extract PROGRAM             extracts the payload of a front-end, and compares what was written with it:
//                                           two times
//     workloads single-write FILE MEGABYTES writes random bytes to a new file with one call of Windows: the limit
//     workloads log COUNT                   writes entries to the log
//     workloads report                      reports the registrations of OneNote and Office
//     workloads find                        looks for OneNote among the running processes
//
// and for these measurements:
//
//     workloads add-neighbours COUNT        makes so many keys beside each of those that the report reads
//     workloads remove-neighbours COUNT     removes them
//     workloads crowd COUNT                 has so many processes run until its input ends; says when they are there

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
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

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

double TimeSingleWrite(const std::wstring& file, std::size_t megabytes) {
    const std::vector<char> bytes = RandomBytes(megabytes);
    const auto start = Clock::now();
    UniqueHandle target(
        CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    WriteFile(target.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    target.Reset();
    return written == bytes.size() ? Milliseconds(Clock::now() - start) : -1;
}

/// When the payload's file was opened: to be written, then to be compared. The start comes last.
std::vector<Clock::time_point> Openings;
Clock::time_point Start;
decltype(&CreateFileW) OriginalCreateFile = nullptr;

HANDLE WINAPI NoteOpening(LPCWSTR name, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                          DWORD flags, HANDLE pattern) {
    Openings.push_back(Clock::now());
    return OriginalCreateFile(name, access, sharing, security, disposition, flags, pattern);
}

BOOL WINAPI RefuseToStart(SHELLEXECUTEINFOW* /*execution*/) {
    Start = Clock::now();
    SetLastError(ERROR_CANCELLED);
    return FALSE;
}

/// Extraction and comparison have no names of their own: they are what happens between these times. False when there
/// are others.
bool TimeExtraction(const wchar_t* program) {
    InstanceHandle = LoadLibraryExW(program, nullptr, DONT_RESOLVE_DLL_REFERENCES); // mapped as a program is
    Log(true) << L"The first entry opens the file of the log";
    OriginalCreateFile = ImportedNow<decltype(CreateFileW)>("CreateFileW");
    const ImportPatch<decltype(CreateFileW)> opening("CreateFileW", NoteOpening);
    const ImportPatch<decltype(ShellExecuteExW)> start("ShellExecuteExW", RefuseToStart);
    try {
        ExtractAndRunInstaller();
    } catch (const _com_error&) { // the refused start
    }
    if (Openings.size() != 2 || Start < Openings[1])
        return false;
    std::printf("%.3f %.3f\n", Milliseconds(Openings[1] - Openings[0]), Milliseconds(Start - Openings[1]));
    return true;
}

double TimeLog(int count) {
    Log(true) << L"The first entry opens the file";
    const auto start = Clock::now();
    for (int entry = 0; entry < count; ++entry)
        Log(true) << L"Entry " << entry << L" of a log that is written to the disk at each of them";
    return Milliseconds(Clock::now() - start);
}

double TimeReport() {
    UnattendedMode = true; // no question
    Log(true);
    const auto start = Clock::now();
    CheckRequirements();
    return Milliseconds(Clock::now() - start);
}

double TimeSearch() {
    Log(true);
    const auto start = Clock::now();
    const UniqueHandle found = FindOneNoteProcess();
    return found ? -1 : Milliseconds(Clock::now() - start);
}

LSTATUS AddKey(const wchar_t* path) {
    UniqueRegistryKey key;
    return RegCreateKeyExW(HKEY_CLASSES_ROOT, path, 0, nullptr, 0, KEY_WRITE, nullptr, key.Receive(), nullptr);
}

LSTATUS RemoveKey(const wchar_t* path) {
    const LSTATUS status = RegDeleteKeyW(HKEY_CLASSES_ROOT, path);
    return status != ERROR_FILE_NOT_FOUND ? status : ERROR_SUCCESS;
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
    const UniqueHandle job(CreateJobObjectW(nullptr, nullptr)); // when it is closed, all of the crowd ends
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!SetInformationJobObject(job.Get(), JobObjectExtendedLimitInformation, &limits, sizeof limits))
        return false;
    while (CountProcesses() < count) {
        std::wstring commandLine = L"winver.exe";
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION member{};
        if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                            &startup, &member))
            return false;
        const UniqueHandle process(member.hProcess);
        const UniqueHandle thread(member.hThread);
        if (!AssignProcessToJobObject(job.Get(), process.Get())) {
            TerminateProcess(process.Get(), 1);
            return false;
        }
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
    if (command == L"single-write")
        time = TimeSingleWrite(first, static_cast<std::size_t>(number));
    else if (command == L"log")
        time = TimeLog(number);
    else if (command == L"report")
        time = TimeReport();
    else if (command == L"find")
        time = TimeSearch();
    else if (command == L"extract")
        return TimeExtraction(first) ? 0 : 1;
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
