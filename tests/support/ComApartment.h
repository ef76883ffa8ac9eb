#pragma once

#include <windows.h>

#include <objbase.h>

#include <thread>

/// COM on the test's thread as long as it lives (single-threaded apartment).
class ComApartment {
public:
    ComApartment() { CoInitialize(nullptr); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() { CoUninitialize(); }
};

/// Whether an action initialises COM on its thread, in a single-threaded apartment, and leaves it so.
template <typename Action>
bool EntersSingleThreadedApartment(Action action) {
    APTTYPE type = APTTYPE_NA;
    std::thread([&] {
        action();
        APTTYPEQUALIFIER qualifier{};
        CoGetApartmentType(&type, &qualifier);
    }).join();
    return type == APTTYPE_STA || type == APTTYPE_MAINSTA;
}
