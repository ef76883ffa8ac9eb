#pragma once

#include "tests/support/LabOffice.h"
#include "tests/support/Program.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// How the user of a window answers it, once the installation has completed.
enum class Ending { Close, StartOneNote };

/// A machine on which an installation succeeds, and what its user does.
struct Scenario {
    const char* name;
    const wchar_t* arguments;
    /// A description in lab/office.
    const wchar_t* office;
    /// Datebookery runs and does not end; OneNote has a window, which does not close.
    bool oneNote;
    /// All that the installation repairs is there to be repaired.
    bool damagedSettings;
    /// There is no key with Internet settings.
    bool noInternetSettings;
    /// Office's list of languages, or null: Windows' language.
    const wchar_t* language;
    Ending ending;
    bool IsUnattended() const { return *arguments != L'\0'; }
};

/// The scenarios, the shortest first.
const std::vector<Scenario>& Scenarios();

/// The values of HKEY_CURRENT_USER by their paths: hashes of their types and data. A key itself stands with 0 under its
/// path and a backslash.
using Settings = std::map<std::wstring, std::uint64_t>;

/// What an installation has left behind.
struct Remains {
    bool folder = false;
    /// Of the payload's bytes; nothing when there is no file.
    std::optional<std::uintmax_t> payload;
    /// Of what the scenario has to repair, and the protocols.
    int repaired = 0;
    int unrepaired = 0;
    std::string log;
    /// The log or the folder lies in the current directory.
    bool elsewhere = false;
    /// Paths of settings that changed and that no installation changes.
    std::vector<std::wstring> strangeSettings;
};

/// The machine that the launcher runs on, in the state in which an installation begins. For one thread.
class ScenarioMachine {
public:
    /// Works in the folder `work`, which it makes. Registers what the scenario needs.
    ScenarioMachine(const Scenario& scenario, std::filesystem::path work);
    ScenarioMachine(const ScenarioMachine&) = delete;
    ScenarioMachine& operator=(const ScenarioMachine&) = delete;
    ~ScenarioMachine();

    /// Removes what the run before has left, and starts what runs.
    void Prepare();
    /// Waits until no payload runs. Throws a std::runtime_error after a minute.
    static void AwaitPayloads();
    /// Ends what still runs, and looks.
    Remains LookAround();

    std::filesystem::path Temporary() const { return work_ / L"temporary"; }
    std::filesystem::path Current() const { return work_ / L"current"; }

private:
    const Scenario& scenario_;
    std::filesystem::path work_;
    LabOffice office_;
    std::optional<Program> datebookery_;
    HWND window_ = nullptr;
    Settings before_;
};
