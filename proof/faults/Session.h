#pragma once

#include "proof/faults/Exchange.h"
#include "proof/faults/ScenarioMachine.h"

#include <filesystem>
#include <string>
#include <vector>

/// What an installer did.
struct Conduct {
    /// It had to be terminated.
    bool hung = false;
    /// The user closed the window before it came to a result.
    bool gaveUp = false;
    DWORD exitCode = 0;
    /// What the window showed when the worker began to wait, each time.
    std::vector<std::string> screens;
    /// Class and title of other windows that it showed.
    std::vector<std::wstring> dialogs;
};

/// The section through which the library is told which call to fail; lasts as long as the object.
class ExchangeSection {
public:
    ExchangeSection();
    ExchangeSection(const ExchangeSection&) = delete;
    ExchangeSection& operator=(const ExchangeSection&) = delete;
    ~ExchangeSection();

    Exchange& operator*() { return *exchange_; }
    Exchange* operator->() { return exchange_; }

private:
    UniqueHandle section_;
    Exchange* exchange_ = nullptr;
};

/// Runs the installer to its end, as the scenario's user does. Throws a std::runtime_error when it can't be started
/// with the library.
Conduct RunInstaller(const std::filesystem::path& installer, const std::filesystem::path& library,
                     const Scenario& scenario, const ScenarioMachine& machine, Exchange& exchange);
