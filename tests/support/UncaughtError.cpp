// A windowed program guarded like the front-end that meets the error its argument names and catches none.

#include "app/AbnormalEnd.h"

#include <windows.h>

#include <comdef.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace {

[[noreturn]] DWORD WINAPI Throw(void* /*context*/) {
    throw std::runtime_error("an error that nothing catches");
}

void ThrowWithoutLeave() noexcept { // NOLINT(bugprone-exception-escape): that it may not is the point
    Throw(nullptr);
}

/// What stands behind the array is what guards the return. Without it the return itself goes wrong: that would end the
/// process as a fault does, so a fault gets another exit code here.
void OverwriteStack() {
    SetUnhandledExceptionFilter([](EXCEPTION_POINTERS* /*exception*/) -> LONG {
        TerminateProcess(GetCurrentProcess(), 1);
        return EXCEPTION_CONTINUE_SEARCH;
    });
    std::array<char, 16> array{};
    const volatile std::size_t size = 2 * array.size();
    std::memset(array.data(), 'x', size);
}

} // namespace

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* commandLine, int /*show*/) {
    const std::wstring_view error = commandLine;
    if (error == L"early")
        Throw(nullptr);
    EndProcessOnUncaughtErrors();
    if (error == L"com")
        throw _com_error(E_FAIL);
    if (error == L"standard")
        Throw(nullptr);
    if (error == L"thread")
        std::thread(Throw, nullptr).join();
    if (error == L"pool") {
        QueueUserWorkItem(Throw, nullptr, 0);
        Sleep(INFINITE);
    }
    if (error == L"noexcept")
        ThrowWithoutLeave();
    if (error == L"fault")
        RaiseException(static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION), 0, 0, nullptr);
    if (error == L"stack")
        OverwriteStack();
    if (error == L"abort")
        std::abort();
    return 0;
}
