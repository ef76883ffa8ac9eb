#pragma once

#include <windows.h>

#include <array>
#include <cstdint>

/// The environment variable that names the section through which the launcher and the library in the installer's
/// process speak to each other.
inline constexpr wchar_t ExchangeVariable[] = L"VELLUMKIT_FAULT";

/// What the installer is at, as each thread's entries in the log and its calls tell.
enum class Step : std::uint8_t { StartUp, Report, Question, Window, Search, Installer, Repairs, End, StartOfOneNote };

inline constexpr std::array StepNames{"start-up",  "report",  "question", "window",          "search",
                                      "installer", "repairs", "end",      "start of OneNote"};

/// One call of a function of the table.
struct CallRecord {
    std::uint16_t function;
    Step step;
    /// Tells where it was made: of the return addresses on the stack, those in the executable.
    std::uint32_t place;
};

inline constexpr std::uint32_t NoFunction = 0xFFFFFFFF;

struct Exchange {
    // Written by the launcher before the installer runs.

    /// Its place in the table; `NoFunction` when no call is to fail.
    std::uint32_t function;
    /// Its place among the function's ways.
    std::uint32_t way;
    /// Counted from 1.
    std::uint32_t call;
    DWORD mainThread;

    // Written by the library.

    volatile LONG failed;
    Step stepOfFailure;
    /// How often the worker began to wait for the user.
    volatile LONG waits;
    volatile LONG payloadStarts;
    volatile LONG damagedPayloads;
    /// Names of called functions that the table lacks, each with a blank behind it.
    std::array<char, 4096> unknown;
    volatile LONG recorded;
    std::array<CallRecord, 0x40000> calls;
};
