#pragma once

#include "lab/onenote/Automation.h"

#include <filesystem>
#include <map>

/// The stand-in: behaves as its settings say, has the windows of `OpenWindows.h`, and records in onenote.log, beside
/// the settings, what it is asked. One in a process.
class ConfiguredOneNote : public AutomatedOneNote {
public:
    /// A whole path.
    explicit ConfiguredOneNote(const std::filesystem::path& settings);

    /// Whether a client has asked for an object yet, got it or not.
    bool WasCalled() const { return !calls_.empty(); }

    Outcome OnCall(const std::wstring& member, const std::wstring& arguments) override;
    void OnLastReferenceReleased() override;
    std::vector<HWND> WindowsByIndex() const override;
    HWND CurrentWindow() const override;
    void Navigate(bool inNewWindow) override;

private:
    std::map<std::wstring, unsigned> calls_; // to each member
};
