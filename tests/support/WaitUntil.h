#pragma once

#include "tests/support/Watchdog.h"

#include <windows.h>

#include <stdexcept>
#include <string>

/// Waits until `condition` holds. Throws a std::runtime_error, which ends the test, when it does not within half a
/// minute.
template <typename Condition>
void WaitUntil(const std::string& what, Condition condition) {
    const Watchdog::Waiting waiting(what.c_str());
    const ULONGLONG end = GetTickCount64() + 30000;
    while (!condition()) {
        if (GetTickCount64() > end)
            throw std::runtime_error("waited in vain for " + what);
        Sleep(20);
    }
}
