#pragma once

#include <string>

/// Microsoft Office on this machine as long as the object lives, as far as the registry goes. There must be no real
/// one.
class LabOffice {
public:
    /// The name of a description in lab/office/. Throws a std::runtime_error, which ends the test, when the registry
    /// can't be written.
    explicit LabOffice(const std::wstring& machine);
    LabOffice(const LabOffice&) = delete;
    LabOffice& operator=(const LabOffice&) = delete;
    ~LabOffice();

    /// Removes what a test program that was ended has left.
    static void Remove();
};
