#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// A parameter through which a failing call gives a null or a zero. The first parameter has index 0.
struct Cleared {
    std::size_t parameter;
    /// 0: there is none.
    std::size_t bytes;
};

/// One way in which a function fails, as it is documented.
struct Way {
    /// As docs/faults.md names it; null: there is no such way.
    const char* name;
    std::uint64_t result;
    /// What GetLastError tells afterwards; 0: it is left alone.
    DWORD error;
    /// The C runtime's errno; 0: it is left alone.
    int crtError;
    Cleared cleared;
    /// It does its work all the same, and fails then.
    bool afterwards;
};

/// A function that an executable may import or look up.
struct Function {
    const char* name;
    std::array<Way, 2> ways;
    /// Why there is no way in which it fails; null when there is one.
    const char* reason;
};

/// All that are known, each once.
std::span<const Function> Functions();

/// Null for an unknown one.
const Function* FindFunction(const char* name);
