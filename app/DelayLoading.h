#pragma once

#include <windows.h>

#include <delayimp.h>

/// What a call of a delay-loaded function comes to as long as its library is not loaded; the linker knows it as
/// __delayLoadHelper2: see cmake/DelayLoading.cmake. Loads the library as `LoadSystemLibrary` does, fills the slots of
/// all functions that the program calls in it, and returns the function of `slot`. The last-error value stays as it
/// was. Where the library or one of the functions can't be found, the process ends with `AbnormalExitCode`. Any thread,
/// also several at a time, and also before the entry point runs.
extern "C" FARPROC WINAPI LoadDelayed(const ImgDelayDescr* library, FARPROC* slot);
