// VellumkitLog.exe: says what came of installations, from their logs.

#include "core/Unique.h"
#include "support/LogFiles.h"
#include "support/Output.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr wchar_t Usage[] = L"Usage: VellumkitLog [/json | /csv] PATH...\r\n"
                            L"\r\n"
                            L"Says what came of installations of Vellumkit, from their logs\r\n"
                            L"(Vellumkit_Install.log). PATH is a log, a folder, whose *.log files are read and\r\n"
                            L"those in the folders below it, or a wildcard. A single log gets a page, several\r\n"
                            L"logs a line each.\r\n"
                            L"\r\n"
                            L"  /json  everything, for programs\r\n"
                            L"  /csv   the same as a table with a header\r\n"
                            L"  /?     this text\r\n"
                            L"\r\n"
                            L"Exit code: 0 when every log ends in success; 1 when one does not; 2 when one is\r\n"
                            L"no log of the installer or can't be read, when there is no log, when an argument\r\n"
                            L"is wrong, and when the output can't be written.\r\n";

enum ExitCode { Success = 0, Failure = 1, NoLog = 2 };

/// Shows the text on a console; into a file or a pipe it goes as UTF-8. False when it can't be written.
bool Write(DWORD device, std::wstring_view text) {
    HANDLE const output = GetStdHandle(device);
    DWORD mode = 0;
    DWORD count = 0;
    if (GetConsoleMode(output, &mode))
        return WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &count, nullptr);
    const auto length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return WriteFile(output, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr) && count == bytes.size();
}

int Refuse(const std::wstring& reason) {
    Write(STD_ERROR_HANDLE, L"VellumkitLog: " + reason + L"\r\n");
    return NoLog;
}

ExitCode ExitCodeOf(Verdict verdict) {
    switch (verdict) {
    case Verdict::Installed:
        return Success;
    case Verdict::Foreign:
    case Verdict::Unreadable:
        return NoLog;
    default:
        return Failure;
    }
}

int Read(Format format, const std::vector<std::filesystem::path>& logs) {
    int exitCode = Success;
    bool written = Write(STD_OUTPUT_HANDLE, OutputBegin(format));
    for (const std::filesystem::path& log : logs) {
        if (!written)
            break;
        const Findings findings = ReadLogFile(log);
        exitCode = std::max<int>(exitCode, ExitCodeOf(findings.verdict));
        written = Write(STD_OUTPUT_HANDLE, OutputOf(format, log, findings, &log == &logs.front()));
    }
    if (!written || !Write(STD_OUTPUT_HANDLE, OutputEnd(format)))
        return Refuse(L"the output can't be written.");
    return exitCode;
}

/// Not a path from the root, which has more than one part.
bool IsOption(std::wstring_view argument) {
    return argument.starts_with(L'-') ||
           (argument.starts_with(L'/') && argument.find_first_of(L"/\\", 1) == std::wstring_view::npos);
}

bool IsOption(const std::wstring& argument, std::wstring_view name) {
    return IsOption(argument) && _wcsicmp(argument.c_str() + 1, name.data()) == 0;
}

int Run(const std::vector<std::wstring>& arguments) {
    std::vector<std::filesystem::path> logs;
    std::optional<Format> format;
    for (const std::wstring& argument : arguments) {
        if (IsOption(argument, L"?") || IsOption(argument, L"-help"))
            return Write(STD_OUTPUT_HANDLE, Usage) ? Success : NoLog;
        if (IsOption(argument, L"json") || IsOption(argument, L"csv")) {
            const Format asked = IsOption(argument, L"json") ? Format::Json : Format::Csv;
            if (format.value_or(asked) != asked)
                return Refuse(L"/json and /csv exclude each other.");
            format = asked;
        } else if (IsOption(argument)) {
            return Refuse(L"unknown option '" + argument + L"'. VellumkitLog /? lists them.");
        } else if (argument.find(L'"') != std::wstring::npos) {
            return Refuse(L"no path has a quote: '" + argument + L"'. One behind a backslash does not end a path.");
        } else {
            const auto found = FindLogs(argument);
            if (found.empty())
                return Refuse(L"there is no log in '" + argument + L"'.");
            logs.insert(logs.end(), found.begin(), found.end());
        }
    }
    if (logs.empty())
        return Refuse(L"which log? VellumkitLog /? tells more.");
    return Read(format.value_or(logs.size() == 1 ? Format::Page : Format::Line), logs);
}

} // namespace

int main() {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> arguments(CommandLineToArgvW(GetCommandLineW(), &count),
                                                                    &LocalFree);
    if (arguments == nullptr)
        return Refuse(L"there is no memory for the command line.");
    try {
        return Run({arguments.get() + 1, arguments.get() + count});
    } catch (const std::exception&) {
        return Refuse(L"there is not enough memory.");
    }
}
