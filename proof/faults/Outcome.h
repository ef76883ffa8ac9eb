#pragma once

#include "proof/faults/ScenarioMachine.h"
#include "proof/faults/Session.h"

#include <string>
#include <string_view>
#include <vector>

/// What came of a run, in words that do not depend on paths, times and counts.
struct Outcome {
    std::string exitCode;
    std::string window;
    std::string log;
    std::string left;
    /// What must not happen in any run; "" when nothing did.
    std::string surprises;
};

/// The texts of a log's entries; an entry without a time begins with " - ".
std::vector<std::wstring> EntriesOf(const std::string& log);

/// `usual` are the entries of the scenario's log when nothing fails, `failed` the function that was to fail: what it
/// writes may be incomplete.
Outcome Judge(const Scenario& scenario, const Conduct& conduct, const Remains& remains, const Exchange& exchange,
              const std::vector<std::wstring>& usual, std::uintmax_t payloadSize, std::string_view failed);
