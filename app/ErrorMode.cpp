#include "app/ErrorMode.h"

#include <windows.h>

void SuppressCriticalErrorBoxes() {
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, nullptr);
}
