#include "tests/support/ImportPatch.h"

#include "tests/support/ImportTable.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

void** FindImport(const char* name) {
    for (const ImportedFunction& function : ImportsOf(GetModuleHandleW(nullptr))) {
        if (std::strcmp(function.name, name) == 0)
            return function.slot;
    }
    std::fprintf(stderr, "The test program does not import %s.\n", name);
    std::_Exit(3);
}

void SetImport(void** slot, void* function) {
    DWORD protection = 0;
    VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection);
    *slot = function;
    VirtualProtect(slot, sizeof *slot, protection, &protection);
}
