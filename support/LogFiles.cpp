#include "support/LogFiles.h"

#include "core/ComError.h"
#include "core/Unique.h"
#include "support/LogReading.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <span>
#include <utility>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t ChunkSize = 1 << 20;

struct FindTraits {
    using Handle = HANDLE;
    static constexpr Handle None = nullptr;
    static bool IsOpen(Handle find) { return find != nullptr && find != INVALID_HANDLE_VALUE; }
    static void Close(Handle find) { FindClose(find); }
};

/// As Windows takes paths of any length: whole, and with a prefix.
std::wstring LongPath(const fs::path& path) {
    std::error_code error;
    const std::wstring whole = fs::absolute(path, error).make_preferred().wstring();
    if (error || whole.starts_with(LR"(\\?\)") || whole.starts_with(LR"(\\.\)"))
        return path.wstring();
    return whole.starts_with(LR"(\\)") ? LR"(\\?\UNC\)" + whole.substr(2) : LR"(\\?\)" + whole;
}

Findings Unreadable(DWORD error) {
    Findings findings;
    findings.verdict = Verdict::Unreadable;
    findings.message = ComErrorText(_com_error(HRESULT_FROM_WIN32(error)));
    return findings;
}

bool IsLog(std::wstring_view name) {
    constexpr std::wstring_view Extension = L".log";
    return name.size() >= Extension.size() &&
           _wcsicmp(name.data() + name.size() - Extension.size(), Extension.data()) == 0;
}

/// Calls `take` with each entry that the pattern fits. False when the folder can't be listed.
template <typename Take>
bool ForEachEntry(const fs::path& pattern, Take take) {
    WIN32_FIND_DATAW entry{};
    const Unique<FindTraits> find(FindFirstFileW(LongPath(pattern).c_str(), &entry));
    if (!find)
        return GetLastError() == ERROR_FILE_NOT_FOUND;
    do
        take(entry);
    while (FindNextFileW(find.Get(), &entry));
    return GetLastError() == ERROR_NO_MORE_FILES;
}

bool IsFolder(const WIN32_FIND_DATAW& entry) {
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Links are not followed: they may lead in a circle, or out of what was collected.
void AddLogsBelow(const fs::path& folder, std::vector<fs::path>& logs) {
    std::vector<fs::path> folders{folder};
    while (!folders.empty()) {
        const fs::path here = std::move(folders.back());
        folders.pop_back();
        const bool isListed = ForEachEntry(here / L"*", [&](const WIN32_FIND_DATAW& entry) {
            const std::wstring_view name = entry.cFileName;
            const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
            if (IsFolder(entry) && !isLink && name != L"." && name != L"..")
                folders.push_back(here / name);
            else if (!IsFolder(entry) && IsLog(name))
                logs.push_back(here / name);
        });
        if (!isListed)
            logs.push_back(here); // which is told to be unreadable
    }
}

void AddMatches(const fs::path& wildcard, std::vector<fs::path>& logs) {
    ForEachEntry(wildcard, [&](const WIN32_FIND_DATAW& entry) {
        if (!IsFolder(entry))
            logs.push_back(wildcard.parent_path() / entry.cFileName);
    });
}

} // namespace

Findings ReadLogFile(const fs::path& file) {
    // A name may lead to a pipe, whose server doesn't get to act as the reader's user.
    const UniqueHandle handle(CreateFileW(
        LongPath(file).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN | SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS, nullptr));
    if (!handle)
        return Unreadable(GetLastError());
    if (GetFileType(handle.Get()) != FILE_TYPE_DISK)
        return Unreadable(ERROR_BAD_FILE_TYPE);
    LogReading reading;
    LogParser parser([&reading](const LogEntry& entry) { reading.Take(entry); });
    std::vector<char> chunk(ChunkSize);
    DWORD count = 0;
    do {
        if (!ReadFile(handle.Get(), chunk.data(), static_cast<DWORD>(chunk.size()), &count, nullptr))
            return Unreadable(GetLastError());
        parser.Feed(std::span(chunk).first(count));
    } while (count != 0);
    parser.Finish();
    return reading.Finish(parser.IsEmpty());
}

std::vector<fs::path> FindLogs(const std::wstring& argument) {
    std::vector<fs::path> logs;
    std::error_code error;
    if (argument.find_first_of(L"*?") != std::wstring::npos)
        AddMatches(argument, logs);
    else if (fs::is_directory(argument, error))
        AddLogsBelow(argument, logs);
    else if (!argument.empty())
        logs.emplace_back(argument);
    std::ranges::sort(logs);
    return logs;
}
