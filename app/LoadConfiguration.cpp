// What Windows reads about the executable before any of its code runs. The header points to it: see
// cmake/set-load-configuration.sh.

#include "app/StackGuard.h"

#include <windows.h>

#if defined(__MINGW32__)

#pragma GCC diagnostic ignored "-Wmissing-field-initializers" // what is not named here is zero

// Reserved1, which later headers call DependentLoadFlags, says how Windows 10 and later search for the libraries that
// are loaded with the program.
extern "C" [[gnu::section(".ldcfg")]] const IMAGE_LOAD_CONFIG_DIRECTORY64 LoadConfiguration{
    .Size = sizeof LoadConfiguration,
    .Reserved1 = LOAD_LIBRARY_SEARCH_SYSTEM32,
    .SecurityCookie = reinterpret_cast<ULONGLONG>(&StackGuard),
};

#endif
