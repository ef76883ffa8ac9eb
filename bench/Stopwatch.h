#pragma once

#include <windows.h>

/// Measures the time since it was made.
class Stopwatch {
public:
    Stopwatch() { QueryPerformanceCounter(&start_); }

    double Milliseconds() const {
        LARGE_INTEGER now{};
        LARGE_INTEGER frequency{};
        QueryPerformanceCounter(&now);
        QueryPerformanceFrequency(&frequency);
        return 1000.0 * static_cast<double>(now.QuadPart - start_.QuadPart) / static_cast<double>(frequency.QuadPart);
    }

private:
    LARGE_INTEGER start_{};
};
