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

// Every text has its line breaks, CR LF, and stands behind the one before. Characters that would steer a console are
// replaced. Texts of a log stand in JSON as strings, in CSV between quotes (RFC 4180).

/// What stands before the first log.
std::wstring OutputBegin(Format format);

/// What is told of one log; `isFirst` of the first one.
std::wstring OutputOf(Format format, const std::filesystem::path& file, const Findings& findings, bool isFirst);

/// What stands behind the last log.
std::wstring OutputEnd(Format format);

/// "installed", for machines and for the lines.
std::wstring_view VerdictName(Verdict verdict);
