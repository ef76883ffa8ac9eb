#pragma once

#include <windows.h>

#include <delayimp.h>

/// What a call of a delay-loaded function comes to as long as its library is not loaded: see cmake/DelayLoading.cmake.
/// The linker knows it by this name. Loads the library as `LoadSystemLibrary` does, fills the slots of all functions
/// that the program calls in it, and returns the function of `slot`. The last-error value stays as it was. Where the
/// library or one of the functions can't be found, the process ends with `AbnormalExitCode`. Any thread, also several
/// at a time, and also before the entry point runs.
// NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the name is the linker's
extern "C" FARPROC WINAPI __delayLoadHelper2(const ImgDelayDescr* library, FARPROC* slot);
