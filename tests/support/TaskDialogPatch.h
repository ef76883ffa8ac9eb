#pragma once

#include "tests/support/ImportPatch.h"

#include <commctrl.h>

#include <gtest/gtest.h>
#include <string_view>

/// Stands in the place of TaskDialogIndirect, which is looked up when it is called, as long as it lives.
class TaskDialogPatch {
public:
    explicit TaskDialogPatch(decltype(&TaskDialogIndirect) replacement) { Replacement = replacement; }

private:
    static inline decltype(&TaskDialogIndirect) Replacement;
    static inline auto* const LookUp = ImportedNow<decltype(GetProcAddress)>("GetProcAddress");

    ImportPatch<decltype(GetProcAddress)> patch_{"GetProcAddress", [](HMODULE library, LPCSTR name) -> FARPROC {
                                                     if (std::string_view(name) != "TaskDialogIndirect")
                                                         return LookUp(library, name);
                                                     EXPECT_EQ(library, GetModuleHandleW(L"comctl32.dll"));
                                                     return reinterpret_cast<FARPROC>(
                                                         reinterpret_cast<void*>(Replacement));
                                                 }};
};
