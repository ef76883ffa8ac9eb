// A library that leaves a mark where a program loads it: an empty file beside itself, named after both. It is made to
// stand in the place of any other, so it uses nothing but kernel32.dll.

#include <windows.h>

#include <array>

namespace {

using Path = std::array<wchar_t, 1024>;
Path Mark;
Path Program;

} // namespace

extern "C" BOOL WINAPI Start(HINSTANCE library, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;
    GetModuleFileNameW(library, Mark.data(), Mark.size());
    GetModuleFileNameW(nullptr, Program.data(), Program.size());
    const wchar_t* name = Program.data();
    for (const wchar_t* end = name; *end != L'\0'; ++end) {
        if (*end == L'\\')
            name = end;
    }
    lstrcatW(lstrcatW(lstrcatW(Mark.data(), L" in "), name + 1), L".mark");
    CloseHandle(CreateFileW(Mark.data(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return TRUE;
}
