#include "support/LogFiles.h"

#include "core/ComError.h"
#include "core/Unique.h"
#include "support/LogReading.h"

#include <windows.h>

#include <shlwapi.h>

#include <algorithm>
#include <span>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t ChunkSize = 1 << 20;

Findings Unreadable(DWORD error) {
    Findings findings;
    findings.verdict = Verdict::Unreadable;
    findings.message = ComErrorText(_com_error(HRESULT_FROM_WIN32(error)));
    return findings;
}

bool IsLog(const fs::path& file) {
    return PathMatchSpecW(file.filename().c_str(), L"*.log") != FALSE;
}

void AddLogsBelow(const fs::path& folder, std::vector<fs::path>& logs) {
    std::error_code error;
    fs::recursive_directory_iterator place(folder, fs::directory_options::skip_permission_denied, error);
    for (; !error && place != fs::recursive_directory_iterator(); place.increment(error)) {
        std::error_code unknown;
        if (IsLog(place->path()) && !place->is_directory(unknown))
            logs.push_back(place->path());
    }
}

void AddMatches(const fs::path& wildcard, std::vector<fs::path>& logs) {
    std::error_code error;
    const fs::path folder = wildcard.has_parent_path() ? wildcard.parent_path() : fs::path(L".");
    fs::directory_iterator place(folder, error);
    for (; !error && place != fs::directory_iterator(); place.increment(error)) {
        const fs::path name = place->path().filename();
        std::error_code unknown;
        if (PathMatchSpecW(name.c_str(), wildcard.filename().c_str()) && !place->is_directory(unknown))
            logs.push_back(wildcard.has_parent_path() ? place->path() : name);
    }
}

} // namespace

Findings ReadLogFile(const fs::path& file) {
    const UniqueHandle handle(CreateFileW(file.c_str(), GENERIC_READ,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                          OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!handle)
        return Unreadable(GetLastError());
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
    else
        logs.emplace_back(argument);
    std::ranges::sort(logs);
    return logs;
}
