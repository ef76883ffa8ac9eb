#pragma once

#include <windows.h>

#include <objbase.h>

/// COM on the test's thread as long as it lives (single-threaded apartment).
class ComApartment {
public:
    ComApartment() { CoInitialize(nullptr); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() { CoUninitialize(); }
};
