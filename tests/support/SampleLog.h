#pragma once

#include "support/Findings.h"
#include "tests/support/LogText.h"

#include <string>
#include <string_view>
#include <utility>

/// A log as the installer writes it, begun on Saturday, the 21st of November 2026, at 21:14:32.
class SampleLog {
public:
    SampleLog() = default;
    /// Goes on with that text.
    explicit SampleLog(std::wstring text) : text_(std::move(text)) {}

    /// The entries come this much later than those before.
    SampleLog& After(int seconds);
    SampleLog& Write(const Entries& entries);

    /// Head and report of a machine of lab/office/.
    SampleLog& WriteReport(const std::wstring& commandLine, const std::wstring& machine = L"no-office");
    /// A pass that finds no OneNote, up to its end.
    SampleLog& WriteInstallation();

    const std::wstring& Text() const { return text_; }

private:
    std::wstring text_ = L"\xFEFF";
    int seconds_ = 0;
};

// What such a pass writes, one after the other; the first one begins the worker.

Entries SampleSearch();
Entries SampleExtraction();
Entries SampleRepairs();
Entries SampleProtocols();

/// The bytes of a UTF-16LE file.
std::string Utf16Bytes(std::wstring_view text);

/// What the log reader says of a file with these bytes, which it is given in pieces of that size.
Findings ReadLogBytes(std::string_view bytes, std::size_t pieceSize = 4096);
