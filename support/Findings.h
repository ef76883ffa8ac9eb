#pragma once

#include "support/Rules.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What came of a run.
enum class Verdict : std::uint8_t {
    /// The last pass has installed.
    Installed,
    /// The last pass has failed.
    Failed,
    /// The log ends at the question about a 32-bit OneNote: the user chose the other installer, or has not answered.
    Asked,
    /// The log ends in the middle: the run was cut off, or goes on.
    Unfinished,
    /// It is no log of the installer.
    Foreign,
    /// There is no such file, or it can't be read.
    Unreadable,
};

/// What the report says of OneNote or of Office's ribbon.
struct Registration {
    enum class Bitness : std::uint8_t { Unknown, NotRegistered, Is32Bit, Is64Bit };

    Bitness bitness = Bitness::Unknown;
    /// OneNote's program, or the ribbon's type library. Empty when none is registered.
    std::wstring path;
    /// The type library that counts names a file that does not exist.
    bool fileIsMissing = false;
};

inline constexpr std::size_t StepCount = static_cast<std::size_t>(RunStep::OneNoteStart) + 1;

/// What a log tells. Of several runs in one file it is the last one.
struct Findings {
    Verdict verdict = Verdict::Foreign;
    /// Where the run failed or ended. Of no meaning for the other verdicts.
    RunStep step = RunStep::Report;
    /// The HRESULT of a failure; nothing when it is cut off.
    std::optional<std::uint32_t> code;
    /// What the window said of it, in its language.
    std::wstring message;
    /// What failed, in a sentence; null when the place of the failure does not tell.
    const wchar_t* cause = nullptr;

    /// Empty when the log lacks it.
    std::wstring version;
    std::wstring commandLine;
    std::optional<std::chrono::local_seconds> begun;
    /// Nothing when the log lacks the command line.
    std::optional<bool> attended;
    /// "de". Only a failure tells.
    std::wstring language;
    /// The report found a 32-bit OneNote or Office, so that a user was asked.
    bool asked = false;
    int passes = 0;
    Registration oneNote;
    Registration office;
    /// Names of programs.
    std::vector<std::wstring> terminated;
    /// Settings that were deleted or changed.
    std::vector<std::wstring> repaired;
    /// How long each step took in all. A clock that is set back counts as none.
    std::array<std::chrono::seconds, StepCount> took{};
    /// Entries that no rule knows.
    std::size_t unknown = 0;
    /// Entries that are not where the installer writes them.
    std::size_t disbelieved = 0;
    /// What else a person should know, in sentences.
    std::vector<std::wstring> notes;
};
