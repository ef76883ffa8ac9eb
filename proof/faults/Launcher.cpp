// Runs the installer again and again, and lets one call fail each time.
//
//     fault-launcher survey PLAN                  lists the calls of each scenario that are to fail: the plan
//     fault-launcher run PLAN RESULTS SHARE COUNT performs those of the plan that the folder RESULTS lacks, of COUNT
//                                                 shares the one with that number, counted from 0
//     fault-launcher document RESULTS DOCUMENT    writes what came of them into the document
//     fault-launcher sample NUMBER SHARE COUNT    performs the share of the first ones of a plan and compares what came
//                                                 of them with faults.md beside this program, and the functions
//                                                 that are called with its
//
// The exit code is 1 when something differs or fails.

#include "core/TempPath.h"
#include "proof/faults/Document.h"
#include "proof/faults/Functions.h"
#include "proof/faults/Outcome.h"
#include "proof/faults/ScenarioMachine.h"
#include "proof/faults/Session.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/TestFolder.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// A call that is to fail, as a line of the plan names it.
struct Job {
    std::string scenario;
    std::string function;
    std::size_t way = 0;
    std::uint32_t call = 0;
};

const Function& FunctionNamed(const std::string& name) {
    const Function* const function = FindFunction(name.c_str());
    if (function == nullptr)
        throw std::runtime_error("the plan names the unknown " + name);
    return *function;
}

/// What tells a job from all others, in the plan and in the results.
std::string KeyOf(const Job& job) {
    return job.scenario + ' ' + job.function + ' ' + FunctionNamed(job.function).ways.at(job.way).name + ' ' +
           std::to_string(job.call);
}

std::string KeyOf(const Result& result) {
    return result.scenario + ' ' + result.function + ' ' + result.way + ' ' + result.call;
}

std::vector<Job> ReadPlan(const fs::path& file) {
    std::vector<Job> plan;
    std::ifstream stream(file);
    for (Job job; stream >> job.scenario >> job.function >> job.way >> job.call;)
        plan.push_back(job);
    return plan;
}

/// Runs one scenario again and again on its machine.
class Runner {
public:
    explicit Runner(const Scenario& scenario) : scenario_(scenario), machine_(scenario, fs::path(TempPath(L"faults"))) {
        payloadSize_ = fs::file_size(ElevatedInstaller());
        Perform(NoFunction, 0, 0);
        if (exchange_->unknown[0] != '\0')
            throw std::runtime_error(std::string("no row in proof/faults/Functions.cpp for: ") +
                                     exchange_->unknown.data());
        usual_ = EntriesOf(remains_.log);
        const Outcome outcome = Judged("");
        const std::string window = scenario.IsUnattended() ? "–" : "Completed";
        if (!outcome.surprises.empty() || outcome.left != "everything" || outcome.window != window)
            throw std::runtime_error(
                std::string(scenario.name) + " does not succeed when nothing fails: " + outcome.exitCode + ", " +
                outcome.window + ", " + outcome.log + ", " + outcome.left + ", " + outcome.surprises);
    }

    /// The calls of the last run.
    std::span<const CallRecord> Calls() {
        return std::span(exchange_->calls).first(static_cast<std::size_t>(exchange_->recorded));
    }

    void Perform(std::uint32_t function, std::uint32_t way, std::uint32_t call) {
        std::memset(&*exchange_, 0, offsetof(Exchange, calls));
        exchange_->function = function;
        exchange_->way = way;
        exchange_->call = call;
        machine_.Prepare();
        conduct_ = RunInstaller(ProgramFolder().parent_path() / "VellumkitInstaller.x64.exe",
                                ProgramFolder() / "fault.dll", scenario_, machine_, *exchange_);
        remains_ = machine_.LookAround();
    }

    Outcome Judged(std::string_view failed) {
        return Judge(scenario_, conduct_, remains_, *exchange_, usual_, payloadSize_, failed);
    }

    Result Try(const Job& job) {
        const Function& function = FunctionNamed(job.function);
        Perform(static_cast<std::uint32_t>(&function - Functions().data()), static_cast<std::uint32_t>(job.way),
                job.call);
        Result result{.scenario = job.scenario,
                      .function = job.function,
                      .way = function.ways.at(job.way).name,
                      .call = std::to_string(job.call),
                      .step = "not reached"};
        const Outcome outcome = Judged(exchange_->failed != 0 ? job.function : "");
        result.surprises = outcome.surprises;
        if (exchange_->failed == 0)
            return result;
        result.step = StepNames.at(static_cast<std::size_t>(exchange_->stepOfFailure));
        result.exitCode = outcome.exitCode;
        result.window = outcome.window;
        result.log = outcome.log;
        result.left = outcome.left;
        return result;
    }

private:
    const Scenario& scenario_;
    ScenarioMachine machine_;
    ExchangeSection exchange_;
    Conduct conduct_;
    Remains remains_;
    std::vector<std::wstring> usual_;
    std::uintmax_t payloadSize_ = 0;
};

/// In an order in which any beginning has as many of each function and way in each scenario as it can. A job's own name
/// decides on its place, so that two surveys that differ in a few calls have nearly the same beginning.
std::vector<Job> Shuffled(std::vector<Job> jobs) {
    static constexpr char Seed[] = "20261122 ";
    std::ranges::sort(jobs, {}, [](const Job& job) { return std::hash<std::string>()(Seed + KeyOf(job)); });
    std::map<std::tuple<std::string, std::string, std::size_t>, std::size_t> counts;
    std::multimap<std::size_t, Job> rounds;
    for (const Job& job : jobs)
        rounds.emplace(++counts[{job.scenario, job.function, job.way}], job);
    std::ranges::transform(rounds, jobs.begin(), [](const auto& round) { return round.second; });
    return jobs;
}

/// Every call that no scenario before made at that step and place, and no earlier call of the same one; then, of the
/// first scenario, every other call too.
std::vector<Job> Survey() {
    std::vector<Job> plan;
    std::vector<Job> repeated;
    std::set<std::tuple<std::uint16_t, Step, std::uint32_t>> known;
    for (const Scenario& scenario : Scenarios()) {
        Runner runner(scenario);
        std::vector<std::uint32_t> counts(Functions().size());
        for (const CallRecord& call : runner.Calls()) {
            const std::uint32_t number = ++counts.at(call.function);
            const Function& function = Functions()[call.function];
            const bool isNew = known.insert({call.function, call.step, call.place}).second;
            if (!isNew && &scenario != &Scenarios().front())
                continue;
            for (std::size_t way = 0; way < function.ways.size() && function.ways.at(way).name != nullptr; ++way)
                (isNew ? plan : repeated).push_back({scenario.name, function.name, way, number});
        }
    }
    plan = Shuffled(std::move(plan));
    std::ranges::copy(Shuffled(std::move(repeated)), std::back_inserter(plan));
    return plan;
}

std::vector<Result> ReadResults(const fs::path& folder) {
    std::vector<Result> results;
    for (const auto& entry : fs::directory_iterator(folder)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        for (std::string line; std::getline(stream, line);) {
            Result result = ParseLine(line);
            if (!result.function.empty())
                results.push_back(std::move(result));
        }
    }
    return results;
}

/// Every `count`th of them, from `share` on.
std::vector<Job> ShareOf(const std::vector<Job>& jobs, std::size_t share, std::size_t count) {
    std::vector<Job> own;
    for (std::size_t index = share; index < jobs.size(); index += count)
        own.push_back(jobs[index]);
    return own;
}

/// Performs the jobs and hands each result on.
template <typename Report>
void Perform(const std::vector<Job>& jobs, Report report) {
    const std::vector<Scenario>& scenarios = Scenarios();
    for (std::size_t number = scenarios.size(); number-- != 0;) { // the first one has the most, all alike
        const Scenario& scenario = scenarios[number];
        std::unique_ptr<Runner> runner;
        for (const Job& job : jobs) {
            if (job.scenario != scenario.name)
                continue;
            if (runner == nullptr)
                runner = std::make_unique<Runner>(scenario);
            report(runner->Try(job));
        }
    }
}

void RunShare(const fs::path& planFile, const fs::path& folder, std::size_t share, std::size_t count) {
    std::set<std::string> done;
    for (const Result& result : ReadResults(folder))
        done.insert(KeyOf(result));
    std::vector<Job> jobs = ShareOf(ReadPlan(planFile), share, count);
    std::erase_if(jobs, [&done](const Job& job) { return done.contains(KeyOf(job)); });
    std::ofstream results(folder / (std::to_string(share) + ".txt"), std::ios::binary | std::ios::app);
    results << '\n'; // after a line that was not written to its end
    Perform(jobs, [&results](const Result& result) { results << Line(result) << std::endl; });
}

int Complain(const std::vector<std::string>& complaints) {
    for (const std::string& complaint : complaints)
        std::cout << complaint << '\n';
    return complaints.empty() ? 0 : 1;
}

int RunSample(std::size_t number, std::size_t share, std::size_t count) {
    std::vector<Result> results;
    const fs::path document = ProgramFolder() / "faults.md";
    std::vector<Job> sample = Survey();
    std::set<std::string> called;
    std::ranges::transform(sample, std::inserter(called, called.end()), &Job::function);
    sample.resize(std::min(number, sample.size()));
    Perform(ShareOf(sample, share, count), [&results](const Result& result) { results.push_back(result); });
    std::vector<std::string> complaints = Compare(document, results);
    std::ranges::move(Uncalled(document, called), std::back_inserter(complaints));
    return Complain(complaints);
}

int Run(const std::vector<std::string>& arguments) {
    const auto number = [&arguments](std::size_t index) { return std::stoul(arguments.at(index)); };
    const std::string command = arguments.empty() ? "" : arguments[0];
    if (command == "survey" && arguments.size() == 2) {
        std::ofstream plan(arguments[1], std::ios::binary);
        for (const Job& job : Survey())
            plan << job.scenario << ' ' << job.function << ' ' << job.way << ' ' << job.call << '\n';
        return 0;
    }
    if (command == "run" && arguments.size() == 5) {
        RunShare(arguments[1], arguments[2], number(3), number(4));
        return 0;
    }
    if (command == "document" && arguments.size() == 3) {
        WriteDocument(arguments[2], ReadResults(arguments[1]));
        return Complain(Compare(arguments[2], ReadResults(arguments[1])));
    }
    if (command == "sample" && arguments.size() == 4)
        return RunSample(number(1), number(2), number(3));
    throw std::runtime_error("see proof/faults/Launcher.cpp for what it takes");
}

} // namespace

int main(int argc, char** argv) {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    try {
        return Run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "fault-launcher: " << error.what() << '\n';
        return 1;
    }
}
