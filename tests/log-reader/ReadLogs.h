#pragma once

#include "support/Output.h"
#include "tests/support/SampleLog.h"

#include <algorithm>
#include <string>
#include <string_view>

// What the tests ask of a log that was read, and pieces of logs.

inline Findings Read(const SampleLog& log) {
    return ReadLogBytes(Utf16Bytes(log.Text()));
}

inline std::wstring VerdictOf(const Findings& findings) {
    return std::wstring(VerdictName(findings.verdict));
}

inline std::wstring StepOf(const Findings& findings) {
    return StepTexts()[static_cast<std::size_t>(findings.step)].name;
}

inline bool HasNote(const Findings& findings, std::wstring_view text) {
    return std::ranges::any_of(findings.notes,
                               [text](const std::wstring& note) { return note.find(text) != std::wstring::npos; });
}

inline SampleLog Unattended() {
    return SampleLog().WriteReport(L"/config x");
}

/// What OneNote that has to be terminated leaves.
inline Entries StubbornSearch(const std::wstring& name = L"onenote.exe") {
    return {L"Begin processing", L"Checking if OneNote is running", L"Found process '" + name + L"'",
            L"OneNote is still running. Waiting..."};
}

/// What an entry begins with.
inline const std::wstring Line = L"\r\nSat Nov 21 21:14:33 2026 - ";
