#include "tests/support/ImportTable.h"

namespace {

/// The structure at a relative virtual address of the module.
template <typename Structure>
Structure* At(HMODULE module, ULONGLONG address) {
    return reinterpret_cast<Structure*>(reinterpret_cast<ULONG_PTR>(module) + address);
}

void AppendImports(HMODULE module, const IMAGE_IMPORT_DESCRIPTOR& descriptor, std::vector<ImportedFunction>& imports) {
    const auto* const library = At<const char>(module, descriptor.Name);
    const auto* lookup = At<const IMAGE_THUNK_DATA64>(module, descriptor.OriginalFirstThunk);
    auto* slot = At<void*>(module, descriptor.FirstThunk);
    for (; lookup->u1.AddressOfData != 0; ++lookup, ++slot) {
        const bool byOrdinal = IMAGE_SNAP_BY_ORDINAL64(lookup->u1.Ordinal);
        const auto* const byName = At<const IMAGE_IMPORT_BY_NAME>(module, byOrdinal ? 0 : lookup->u1.AddressOfData);
        imports.push_back({library, byOrdinal ? "" : reinterpret_cast<const char*>(byName->Name), slot});
    }
}

} // namespace

const IMAGE_NT_HEADERS64& HeadersOf(HMODULE module) {
    return *At<const IMAGE_NT_HEADERS64>(module,
                                         static_cast<ULONGLONG>(At<const IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
}

std::vector<ImportedFunction> ImportsOf(HMODULE module) {
    const DWORD directory = HeadersOf(module).OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::vector<ImportedFunction> imports;
    for (const auto* descriptor = At<const IMAGE_IMPORT_DESCRIPTOR>(module, directory); descriptor->Name != 0;
         ++descriptor)
        AppendImports(module, *descriptor, imports);
    return imports;
}
