#pragma once

#include "tests/support/LogText.h"
#include "tests/support/Program.h"

#include <optional>
#include <string>
#include <vector>

/// OneNote on this machine as long as the object lives: the lab's stand-in, at first neither registered nor running.
/// What runs of it ends with the object, whoever started it.
class LabOneNote {
public:
    /// Settings and record lie in that folder, which ends in a backslash.
    explicit LabOneNote(std::wstring folder);
    LabOneNote(const LabOneNote&) = delete;
    LabOneNote& operator=(const LabOneNote&) = delete;
    ~LabOneNote();

    /// All settings of the section [OneNote], which lab/sample.ini explains, a line each.
    void Set(std::wstring settings) const;

    /// A member, and which of the calls to it, counted from 1.
    struct Call {
        const wchar_t* member = nullptr;
        int occurrence = 1;
    };
    // Settings for a call that fails, or that succeeds and gives null.
    static std::wstring Failing(const Call& call, HRESULT result, const std::wstring& description = L"");
    static std::wstring GivingNull(const Call& call);

    /// Makes its automation known to COM, which starts it on demand.
    void Register();
    /// The same, but the objects are in the client's own process, whose temporary folder `folder` must be.
    void RegisterInProcess();
    /// Removes what an earlier test program that was ended has left in the registry.
    static void Unregister();

    /// Starts it by hand, and returns when its windows are open.
    void Start();
    /// The one that was started by hand.
    const Program& Started() const { return *started_; }

    /// The top-level windows of all that run, the foremost first.
    static std::vector<HWND> Windows();
    /// Closes them as a user would.
    static void Close();

    /// Compares what it was asked and what became of it, in order. "Ended" may come late, so this waits up to 10
    /// seconds for the last entry.
    void ExpectRecord(const Entries& expected) const;

private:
    Entries Record() const;

    std::wstring folder_;
    bool registered_ = false;
    std::optional<Program> started_;
};
