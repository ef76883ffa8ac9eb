#pragma once

#include "tests/support/LogText.h"

#include <string>

/// The user's browser as long as the object lives: the lab's stand-in, registered for https.
class LabBrowser {
public:
    /// `folder` is the temporary folder of the program that opens it, with its backslash.
    explicit LabBrowser(std::wstring folder);
    LabBrowser(const LabBrowser&) = delete;
    LabBrowser& operator=(const LabBrowser&) = delete;
    ~LabBrowser();

    /// Registers a program that does not exist instead.
    static void Break();

    /// Compares the addresses that were opened, in order. The last one may come late, so this waits up to 10 seconds.
    void ExpectOpened(const Entries& addresses) const;

private:
    std::wstring folder_;
    std::wstring formerCommand_;
};
