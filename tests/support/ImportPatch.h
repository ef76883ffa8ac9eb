#pragma once

#include <windows.h>

/// The slot of the test program's own import table through which it calls the function of that name. Ends the program
/// with a message when it does not import the function. See IMAGE_IMPORT_DESCRIPTOR.
void** FindImport(const char* name);

/// Writes a slot of a table of functions, which may be read-only: one that `FindImport` gave, or one of a vtable.
void SetImport(void** slot, void* function);

/// What the program calls under that name now. The function's address will not do for a replacement that calls the
/// original: it may be that of a jump through the import table.
template <typename Function>
Function* ImportedNow(const char* name) {
    return reinterpret_cast<Function*>(*FindImport(name));
}

/// Replaces one imported function of the test's own process as long as it lives, for failures that can't be made for
/// real. `Function` is the function's type, so that a replacement of another type does not compile:
///
///     const ImportPatch<decltype(Sleep)> sleep("Sleep", [](DWORD milliseconds) { Slept = milliseconds; });
template <typename Function>
class ImportPatch {
public:
    ImportPatch(const char* name, Function* replacement) : slot_(FindImport(name)), original_(*slot_) {
        SetImport(slot_, reinterpret_cast<void*>(replacement));
    }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    ~ImportPatch() { SetImport(slot_, original_); }

private:
    void** slot_;
    void* original_;
};
