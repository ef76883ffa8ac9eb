#pragma once

#include "support/Findings.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

/// How the reader tells what it has found.
enum class Format : std::uint8_t {
    /// A page for a person.
    Page,
    /// A line for a person.
    Line,
    Json,
    Csv,
};

// Every text has its line breaks, CR LF, and stands behind the one before. For a person, characters that would steer a
// console are replaced. CSV is as RFC 4180 has it, with a byte-order mark; what a spreadsheet would take for a formula
// has an apostrophe in front.

/// What stands before the first log.
std::wstring OutputBegin(Format format);

/// What is told of one log; `isFirst` of the first one.
std::wstring OutputOf(Format format, const std::filesystem::path& file, const Findings& findings, bool isFirst);

/// What stands behind the last log.
std::wstring OutputEnd(Format format);

/// "installed", for machines and for the lines.
std::wstring_view VerdictName(Verdict verdict);

/// "search": where the run failed or ended. Empty of one that has installed, and without a log.
std::wstring StepName(const Findings& findings);
