#include "tests/support/SampleLog.h"

#include "support/LogReading.h"
#include "tests/support/TestFolder.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <gtest/gtest.h>

SampleLog& SampleLog::After(int seconds) {
    seconds_ += seconds;
    return *this;
}

SampleLog& SampleLog::Write(const Entries& entries) {
    constexpr int Begin = (21 * 60 + 14) * 60 + 32;
    const int time = Begin + seconds_;
    std::array<wchar_t, 64> prefix{};
    std::swprintf(prefix.data(), prefix.size(), L"\r\nSat Nov 21 %02d:%02d:%02d 2026 - ", time / 3600, time / 60 % 60,
                  time % 60);
    for (const std::wstring& entry : entries)
        text_.append(prefix.data()).append(entry);
    return *this;
}

SampleLog& SampleLog::WriteReport(const std::wstring& commandLine, const std::wstring& machine) {
    Entries entries = ReadLines(ProgramFolder() / "reports" / (machine + L".txt"));
    EXPECT_GT(entries.size(), 100U);
    for (std::wstring& entry : entries) {
        if (entry.starts_with(L"Command line: "))
            entry = L"Command line: " + commandLine;
        else if (entry == L"Version …")
            entry = L"Version 4.5.1";
        std::ranges::replace(entry, L'␀', L'\0');
    }
    return Write(entries);
}

SampleLog& SampleLog::WriteInstallation() {
    return Write(SampleSearch()).Write(SampleExtraction()).Write(SampleRepairs()).Write(SampleProtocols());
}

Entries SampleSearch() {
    return {L"Begin processing", L"Begin processing", L"Checking if OneNote is running",
            L"State: Installing - OneNote is not running, continuing with install"};
}

Entries SampleExtraction() {
    const std::wstring target = LR"(C:\Temp\Vellumkit\Vellumkit Installer.exe)";
    return {LR"(Folder path is: C:\Temp\Vellumkit)",
            L"Folder does not exist, creating...",
            L"Done.",
            L"Extracting installer to " + target,
            L"    Installing file at resource id: 200 to path: " + target,
            L"    Loading from resource",
            L"    Size of the file is: 123456",
            L"    Writing to the given path",
            L"    Done.",
            L"Waiting for installer to finish"};
}

Entries SampleRepairs() {
    return {LR"(Deleting registry key: HKCU\Software\Microsoft\Office\14.0\OneNote\Resiliency\DisabledItems\@)",
            L"Key not found",
            LR"(Deleting registry key: HKCU\Software\Microsoft\Office\15.0\OneNote\Resiliency\DisabledItems\@)",
            LR"(Deleting registry key: HKCU\Software\Microsoft\Office\16.0\OneNote\Resiliency\DisabledItems\@)",
            L"ERROR: ",
            LR"(Deleting registry key: HKCU\Software\Microsoft\Office\14.0\OneNote\Security\DisableAllAddins)",
            L"Key not found",
            LR"(Deleting registry key: HKCU\Software\Microsoft\Office\15.0\OneNote\Security\DisableAllAddins)",
            L"Value not found",
            LR"(Deleting registry key: HKCU\Software\Microsoft\Office\16.0\OneNote\Security\DisableAllAddins)",
            L"Key not found",
            LR"(Deleting registry key: HKCU\Software\Microsoft\Office\OneNote\AddIns\Vellumkit.Addin\LoadBehavior)"};
}

Entries SampleProtocols() {
    const std::wstring settings = L"Microsoft\\Windows\\CurrentVersion\\Internet Settings\\SecureProtocols - Not found";
    return {L"Internet Security Settings", L"    HKCU\\Software\\" + settings,           L"", L"Updated to 2688",
            L"Internet Security Settings", L"    HKCU\\Software\\Policies\\" + settings, L"", L"State: Complete"};
}

std::string Utf16Bytes(std::wstring_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
}

Findings ReadLogBytes(std::string_view bytes, std::size_t pieceSize) {
    LogReading reading;
    LogParser parser([&reading](const LogEntry& entry) { reading.Take(entry); });
    for (std::size_t place = 0; place < bytes.size(); place += pieceSize) {
        const std::string_view piece = bytes.substr(place, pieceSize);
        parser.Feed({piece.data(), piece.size()});
    }
    parser.Finish();
    return reading.Finish(parser.IsEmpty());
}
