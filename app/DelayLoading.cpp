#include "app/DelayLoading.h"

#include "app/AbnormalEnd.h"
#include "core/SystemLibrary.h"

#include <array>

/// The executable itself, by the linker's name for its beginning.
extern const IMAGE_DOS_HEADER Executable asm("__ImageBase");

namespace {

template <typename Structure>
Structure* At(ULONGLONG address) {
    return reinterpret_cast<Structure*>(reinterpret_cast<ULONG_PTR>(&Executable) + address);
}

HMODULE Load(const char* name) {
    std::array<wchar_t, MAX_PATH> wide{};
    MultiByteToWideChar(CP_UTF8, 0, name, -1, wide.data(), static_cast<int>(wide.size()));
    return LoadSystemLibrary(wide.data());
}

} // namespace

extern "C" FARPROC WINAPI LoadDelayed(const ImgDelayDescr* library, FARPROC* slot) {
    const DWORD lastError = GetLastError();
    const HMODULE module = Load(At<const char>(library->rvaDLLName));
    if (module == nullptr)
        EndProcessAbnormally();
    const auto* const names = At<const IMAGE_THUNK_DATA64>(library->rvaINT);
    auto* const functions = At<FARPROC>(library->rvaIAT);
    // All of them, although one is called: what stands in for a function until then keeps the integer arguments only.
    // The first function of a library that is called has no others, as GdiplusStartup.
    // Threads that come here together store the same addresses.
    for (std::size_t index = 0; names[index].u1.AddressOfData != 0; ++index) {
        const FARPROC function =
            GetProcAddress(module, At<const IMAGE_IMPORT_BY_NAME>(names[index].u1.AddressOfData)->Name);
        // The linker of Debian 13 lays the slots where they can only be read. They can be written from then on.
        DWORD protection = 0;
        if (function == nullptr ||
            !VirtualProtect(&functions[index], sizeof functions[index], PAGE_READWRITE, &protection))
            EndProcessAbnormally();
        functions[index] = function;
    }
    SetLastError(lastError);
    return *slot;
}
