// VellumkitLog.exe: says what came of installations, from their logs.

#include "core/Unique.h"
#include "support/LogFiles.h"
#include "support/Output.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr wchar_t Usage[] =
    L"Usage: VellumkitLog [/json | /csv] PATH...\r\n"
    L"\r\n"
    L"Says what came of installations of Vellumkit, from their logs (Vellumkit_Install.log). PATH is a log, a folder,\r\n"
    L"whose *.log files are read, and those in the folders below it, or a wildcard. A single log gets a page, several\r\n"
    L"ones a line each.\r\n"
    L"\r\n"
    L"  /json  everything, for programs\r\n"
    L"  /csv   the same as a table with a header\r\n"
    L"  /?     this text\r\n"
    L"\r\n"
    L"Exit code: 0 when every log ends in success, 1 when one does not, 2 when one can't be read or is none of the\r\n"
    L"installer's, and when there is none.\r\n";

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
        const Findings findings = ReadLogFile(log);
        exitCode = std::max<int>(exitCode, ExitCodeOf(findings.verdict));
        written = written && Write(STD_OUTPUT_HANDLE, OutputOf(format, log, findings, &log == &logs.front()));
    }
    if (!written || !Write(STD_OUTPUT_HANDLE, OutputEnd(format)))
        return Refuse(L"the output can't be written.");
    return exitCode;
}

int Run(const std::vector<std::wstring>& arguments) {
    std::vector<std::filesystem::path> logs;
    std::wstring option;
    for (const std::wstring& argument : arguments) {
        if (argument == L"/?")
            return Write(STD_OUTPUT_HANDLE, Usage) ? Success : NoLog;
        if (argument == L"/json" || argument == L"/csv") {
            if (!option.empty() && option != argument)
                return Refuse(L"/json and /csv exclude each other.");
            option = argument;
        } else if (argument.starts_with(L'/') && argument.find_first_of(L"/\\", 1) == std::wstring::npos) {
            return Refuse(L"unknown option '" + argument + L"'. VellumkitLog /? lists them.");
        } else {
            const auto found = FindLogs(argument);
            if (found.empty())
                return Refuse(L"there is no log in '" + argument + L"'.");
            logs.insert(logs.end(), found.begin(), found.end());
        }
    }
    if (logs.empty())
        return Refuse(L"which log? VellumkitLog /? tells more.");
    if (!option.empty())
        return Read(option == L"/json" ? Format::Json : Format::Csv, logs);
    return Read(logs.size() == 1 ? Format::Page : Format::Line, logs);
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
