#pragma once

#include <windows.h>

#include <vector>

struct ImportedFunction {
    /// As the importing module spells it: "KERNEL32.dll".
    const char* library;
    /// "" for a function imported by its ordinal.
    const char* name;
    /// Where the loader puts the function's address.
    void** slot;
};

/// The headers of a module that is mapped as an image.
const IMAGE_NT_HEADERS64& HeadersOf(HMODULE module);

/// The functions that a mapped module imports (IMAGE_DIRECTORY_ENTRY_IMPORT). All pointers point into the module.
std::vector<ImportedFunction> ImportsOf(HMODULE module);
