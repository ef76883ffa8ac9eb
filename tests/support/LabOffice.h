#pragma once

#include <string>

/// Microsoft Office on this machine as long as the object lives, as far as the registry goes.
class LabOffice {
public:
    /// The name of a description in lab/office/. A test failure when the registry can't be written.
    explicit LabOffice(const std::wstring& machine);
    LabOffice(const LabOffice&) = delete;
    LabOffice& operator=(const LabOffice&) = delete;
    ~LabOffice() { Remove(); }

    /// Leaves none of it, also of what a test program that was ended has left.
    static void Remove();
};
