#include "proof/faults/Document.h"

#include "proof/faults/Exchange.h"
#include "proof/faults/Functions.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <tuple>

namespace {

constexpr std::string_view Begin = "<!-- begin of the table -->";
constexpr std::string_view End = "<!-- end of the table -->";
constexpr std::string_view Nothing = "as without a failure";

/// A row without its steps: function, way, exit code, window, log, left.
using Row = std::tuple<std::string, std::string, std::string, std::string, std::string, std::string>;
using Table = std::map<Row, std::set<std::size_t>>;

/// What a cell can hold.
std::string Cell(const std::string& text) {
    std::string cell;
    for (const char character : text) {
        if (character == '|')
            cell += "\\|";
        else
            cell += character == '\t' || character == '\r' || character == '\n' ? ' ' : character;
    }
    while (!cell.empty() && cell.back() == ' ')
        cell.pop_back();
    return cell;
}

bool ChangesNothing(const Result& result) {
    return result.exitCode == "0" && (result.window == "–" || result.window == "Completed") &&
           result.log == "as usual" && result.left == "everything";
}

/// The runtime of another compiler calls other functions than that of the document's does. Only the start-up does so.
bool IsHarmless(const Result& result) {
    return ChangesNothing(result) || (result.exitCode == "0x40000015" && result.left == "nothing");
}

Row RowOf(const Result& result) {
    if (ChangesNothing(result))
        return {result.function, result.way, std::string(Nothing), "", "", ""};
    return {result.function, result.way, result.exitCode, Cell(result.window), Cell(result.log), Cell(result.left)};
}

std::size_t StepNumber(std::string_view name) {
    const auto* const found = std::ranges::find(StepNames, name);
    if (found == StepNames.end())
        throw std::runtime_error("there is no step " + std::string(name));
    return static_cast<std::size_t>(found - StepNames.begin());
}

Table TableOf(const std::vector<Result>& results) {
    Table table;
    for (const Result& result : results) {
        if (result.WasReached())
            table[RowOf(result)].insert(StepNumber(result.step));
    }
    return table;
}

std::string Steps(const std::set<std::size_t>& steps) {
    std::string text;
    for (const std::size_t step : steps)
        text += (text.empty() ? "" : ", ") + std::string(StepNames.at(step));
    return text;
}

void WriteRow(std::ostream& stream, const Row& row, const std::set<std::size_t>& steps) {
    const auto& [function, way, exitCode, window, log, left] = row;
    stream << "| `" << function << "` | " << way << " | " << Steps(steps) << " | ";
    if (exitCode == Nothing)
        stream << Nothing << " | | | |\n";
    else
        stream << exitCode << " | " << window << " | " << log << " | " << left << " |\n";
}

std::vector<std::string> Cells(const std::string& line) {
    std::vector<std::string> cells;
    std::string cell;
    for (std::size_t index = 1; index < line.size(); ++index) {
        if (line[index] == '|' && line[index - 1] != '\\') {
            const std::size_t first = cell.find_first_not_of(' ');
            const std::size_t last = cell.find_last_not_of(' ');
            cells.push_back(first == std::string::npos ? "" : cell.substr(first, last - first + 1));
            cell.clear();
        } else {
            cell += line[index];
        }
    }
    return cells;
}

std::string Unquoted(const std::string& name) {
    return name.size() > 2 && name.front() == '`' && name.back() == '`' ? name.substr(1, name.size() - 2) : "";
}

/// Complains about rows that are not well-formed.
Table ReadTable(const std::filesystem::path& document, std::vector<std::string>& complaints) {
    constexpr std::size_t Columns = 7;
    Table table;
    std::ifstream stream(document);
    bool inside = false;
    int head = 2;
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line == Begin || line.starts_with("## "))
            inside = line == Begin;
        if (!inside || !line.starts_with('|') || head-- > 0)
            continue;
        const std::vector<std::string> cells = Cells(line);
        const Function* const function = cells.size() == Columns ? FindFunction(Unquoted(cells[0]).c_str()) : nullptr;
        const auto isWay = [&cells](const Way& way) { return way.name != nullptr && cells[1] == way.name; };
        if (function == nullptr || std::ranges::none_of(function->ways, isWay)) {
            complaints.push_back("no row of a function: " + line);
            continue;
        }
        std::set<std::size_t>& steps = table[{function->name, cells[1], cells[3], cells[4], cells[5], cells[6]}];
        std::istringstream names(cells[2]);
        for (std::string name; std::getline(names >> std::ws, name, ',');)
            steps.insert(StepNumber(name));
    }
    if (table.empty())
        complaints.push_back("there is no table in " + document.string());
    return table;
}

std::string ReadText(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteExplanations(std::ostream& stream, const std::vector<Result>& results) {
    std::set<std::string> lines;
    for (const Result& result : results) {
        if (!result.surprises.empty() && !Explanation(result).empty())
            lines.insert("| `" + result.function + "` | " + result.surprises + " | " + Explanation(result) + " |\n");
    }
    stream << "\n## What would be a surprise elsewhere\n\n| Function | What happens | Why |\n|---|---|---|\n";
    for (const std::string& line : lines)
        stream << line;
}

void WriteTable(std::ostream& stream, const Table& table) {
    stream << "| Function | Fails with | During | Exit code | Window | Log | Left behind |\n"
              "|---|---|---|---|---|---|---|\n";
    for (const auto& [row, steps] : table)
        WriteRow(stream, row, steps);
}

void WriteSafeFunctions(std::ostream& stream) {
    std::map<std::string, std::string> safe;
    for (const Function& function : Functions()) {
        if (function.reason != nullptr) {
            std::string& names = safe[function.reason];
            names += (names.empty() ? "`" : ", `") + std::string(function.name) + '`';
        }
    }
    stream << "\n## Functions that do not fail\n\n| Why | Functions |\n|---|---|\n";
    for (const auto& [reason, names] : safe)
        stream << "| " << reason << " | " << names << " |\n";
}

} // namespace

std::string Line(const Result& result) {
    std::string line;
    for (const std::string* field : {&result.scenario, &result.function, &result.way, &result.call, &result.step,
                                     &result.exitCode, &result.window, &result.log, &result.left}) {
        line += Cell(*field) + '\t';
    }
    return line + Cell(result.surprises) + "\t.";
}

Result ParseLine(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, '\t');)
        fields.push_back(field);
    constexpr std::size_t Fields = 11;
    if (fields.size() != Fields)
        return {};
    return {fields[0], fields[1], fields[2], fields[3], fields[4],
            fields[5], fields[6], fields[7], fields[8], fields[9]};
}

void WriteDocument(const std::filesystem::path& document, const std::vector<Result>& results) {
    const std::string text = ReadText(document);
    const std::size_t begin = text.find(Begin);
    const std::size_t end = text.find(End);
    if (begin == std::string::npos || end == std::string::npos)
        throw std::runtime_error(document.string() + " has no marks around its table");
    std::ofstream stream(document, std::ios::binary);
    stream << text.substr(0, begin) << Begin << "\n\n";
    WriteTable(stream, TableOf(results));
    WriteExplanations(stream, results);
    WriteSafeFunctions(stream);
    stream << '\n' << text.substr(end);
}

std::vector<std::string> Uncalled(const std::filesystem::path& document, const std::set<std::string>& called) {
    std::vector<std::string> complaints;
    const std::set<std::size_t> startUp{StepNumber("start-up")};
    std::set<std::string> needed;
    for (const auto& [row, steps] : ReadTable(document, complaints)) {
        if (steps != startUp) // another compiler's runtime calls others there
            needed.insert(std::get<0>(row));
    }
    for (const std::string& function : needed) {
        if (!called.contains(function))
            complaints.push_back("documented, but never called: " + function);
    }
    return complaints;
}

std::vector<std::string> Compare(const std::filesystem::path& document, const std::vector<Result>& results) {
    std::vector<std::string> complaints;
    const Table table = ReadTable(document, complaints);
    const auto reached = static_cast<std::size_t>(std::ranges::count_if(results, &Result::WasReached));
    std::cout << reached << " of " << results.size() << " calls failed\n";
    if (reached * 10 < results.size() * 9)
        complaints.emplace_back("too many calls were not reached");
    for (const Result& result : results) {
        if (!result.surprises.empty() && Explanation(result).empty())
            complaints.push_back("surprise: " + Line(result));
        if (!result.WasReached())
            continue;
        const auto hasFunction = [&result](const auto& row) { return std::get<0>(row.first) == result.function; };
        if (std::ranges::none_of(table, hasFunction) && IsHarmless(result))
            continue;
        const auto row = table.find(RowOf(result));
        if (row == table.end() || !row->second.contains(StepNumber(result.step)))
            complaints.push_back("no row: " + Line(result));
    }
    return complaints;
}
