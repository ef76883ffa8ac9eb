#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

/// What came of one run: the fields of a line of the results.
struct Result {
    std::string scenario;
    std::string function;
    std::string way;
    std::string call;
    /// "not reached" when the scenario made fewer calls this time; nothing else is known then.
    std::string step;
    std::string exitCode{};
    std::string window{};
    std::string log{};
    std::string left{};
    std::string surprises{};

    bool WasReached() const { return step != "not reached"; }
};

/// Separated by tabs, without a line break.
std::string Line(const Result& result);
/// A line that was not written to its end gives an empty result.
Result ParseLine(const std::string& line);

/// Why a surprise is none: what the installer does there is as it shall be. Empty when it is one.
std::string Explanation(const Result& result);

/// Writes the table of all results between the document's marks; what stands around it stays.
void WriteDocument(const std::filesystem::path& document, const std::vector<Result>& results);

/// A line for every function of the document that is not among those of the calls, `called`.
std::vector<std::string> Uncalled(const std::filesystem::path& document, const std::set<std::string>& called);

/// A line for every result that is a surprise or has no row in the document, and for every row that is not well-formed;
/// one more when a tenth of the calls were not reached. Prints how many were.
std::vector<std::string> Compare(const std::filesystem::path& document, const std::vector<Result>& results);
