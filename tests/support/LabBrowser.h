#pragma once

#include "tests/support/LogText.h"
#include "tests/support/Registry.h"

#include <string>

/// The user's browser as long as the object lives: the lab's stand-in, registered for https.
class LabBrowser {
public:
    /// `folder` is the temporary folder of the program that opens it, with its backslash.
    explicit LabBrowser(std::wstring folder);
    LabBrowser(const LabBrowser&) = delete;
    LabBrowser& operator=(const LabBrowser&) = delete;
    ~LabBrowser() = default;

    /// Registers a program that does not exist instead.
    static void Break();

    /// Gives https back to the user's browser, after a test program that was ended.
    static void Unregister();

    /// Waits until no browser runs, and compares the addresses that were opened, in order.
    void ExpectOpened(const Entries& addresses) const;

private:
    std::wstring folder_;
    KeptKey kept_;
};
