#include "proof/faults/Outcome.h"

#include "tests/support/LogText.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

namespace {

constexpr DWORD AbnormalExitCode = 0x40000015;

/// The function that writes the payload, and those of the C runtime that open and write the log.
constexpr std::string_view PayloadWriter = "WriteFile";
constexpr std::array<std::string_view, 4> LogWriters{"_wfsopen", "fwrite", "fflush", "fclose"};

bool WritesLog(std::string_view function) {
    return std::ranges::find(LogWriters, function) != LogWriters.end();
}

std::string ToUtf8(std::wstring_view text) {
    const auto length = static_cast<int>(text.size());
    std::string bytes(
        static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr)),
        '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), static_cast<int>(bytes.size()), nullptr,
                        nullptr);
    return bytes;
}

void Append(std::string& list, std::string_view item, std::string_view separator = ", ") {
    if (!list.empty())
        list += separator;
    list += item;
}

bool IsValidUtf16(const std::string& log) {
    if (log.size() % sizeof(wchar_t) != 0)
        return false;
    const std::wstring text = Utf16(log);
    if (!text.starts_with(L'\xFEFF'))
        return text.empty();
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (IS_LOW_SURROGATE(text[index]))
            return false;
        if (IS_HIGH_SURROGATE(text[index]) && (++index == text.size() || !IS_LOW_SURROGATE(text[index])))
            return false;
    }
    return true;
}

/// Without what differs from machine to machine: the messages of Windows, paths, lengths.
std::wstring Essence(const std::wstring& entry) {
    constexpr std::wstring_view Error = L"ERROR: ";
    const std::size_t code = entry.rfind(L"(0x");
    if (entry.starts_with(Error) && entry.find(L"\n\n") != std::wstring::npos)
        return L"ERROR: Installation failed: … " + (code != std::wstring::npos ? entry.substr(code) : L"");
    if (entry.starts_with(Error) && code != std::wstring::npos)
        return entry.substr(0, entry.find(L": ", Error.size()) + 2) + L"… " + entry.substr(code);
    const std::size_t dash = entry.rfind(L" - ");
    if (entry.starts_with(L"    HK") && dash != std::wstring::npos)
        return entry.substr(4, 5) + L"…" + entry.substr(dash);
    const std::size_t colon = entry.find(L": ");
    if (!entry.starts_with(Error) && colon != std::wstring::npos)
        return entry.substr(0, colon) + L": …";
    return entry;
}

/// Entries that differ in NULs alone look the same.
Entries WithoutNuls(Entries entries) {
    for (std::wstring& entry : entries)
        std::erase(entry, L'\0');
    return entries;
}

/// The report and the last pass of a log, of which each pass begins so.
Entries ReportAndLastPass(const Entries& entries) {
    constexpr std::wstring_view Begin = L"Begin processing";
    const auto report = std::ranges::find(entries, Begin);
    const auto pass = std::find(entries.rbegin(), entries.rend(), Begin);
    Entries parts(entries.begin(), report);
    if (pass != entries.rend())
        parts.insert(parts.end(), std::prev(pass.base()), entries.end());
    // Only the first pass finds no folder.
    if (const auto made = std::ranges::find(parts, L"Folder does not exist, creating..."); made != parts.end()) {
        *made = L"Folder already exists";
        if (std::next(made) != parts.end() && *std::next(made) == L"Done.")
            parts.erase(std::next(made));
    }
    return parts;
}

/// Whether the log ends early, perhaps in the middle of an entry, and is as usual up to there.
bool IsCutOff(const Entries& entries, const Entries& usual) {
    if (entries.size() > usual.size() || entries == usual)
        return false;
    return entries.empty() || (std::equal(entries.begin(), std::prev(entries.end()), usual.begin()) &&
                               usual[entries.size() - 1].starts_with(entries.back()));
}

std::string LogOutcome(const std::string& log, const Entries& usualEntries) {
    if (log.empty())
        return "none";
    if (IsCutOff(EntriesOf(log), usualEntries))
        return "cut off";
    const Entries usual = WithoutNuls(usualEntries);
    Entries entries = WithoutNuls(EntriesOf(log));
    std::vector<std::wstring> errors;
    std::vector<std::wstring> others;
    bool lacksTime = false;
    for (std::wstring& entry : entries) {
        if (entry.starts_with(L" - ")) {
            lacksTime = true;
            entry.erase(0, 3);
        }
        if (std::ranges::find(usual, entry) != usual.end() || entry == L"Folder already exists")
            continue;
        auto& list = entry.starts_with(L"ERROR: ") ? errors : others;
        const std::wstring essence = Essence(entry);
        if (std::ranges::find(list, essence) == list.end())
            list.push_back(essence);
    }
    std::string outcome;
    for (const std::wstring& entry : errors.empty() ? others : errors)
        Append(outcome, ToUtf8(entry), "; ");
    if (lacksTime)
        Append(outcome, "an entry without its time", "; ");
    if (!outcome.empty())
        return outcome;
    return ReportAndLastPass(entries) == ReportAndLastPass(usual) ? "as usual" : "other entries than usual";
}

std::string LeftOutcome(const Remains& remains, const Exchange& exchange, std::size_t passes,
                        std::uintmax_t payloadSize) {
    std::string left;
    if (remains.folder)
        Append(left, "folder");
    const bool whole = remains.payload == payloadSize;
    if (remains.payload)
        Append(left, whole ? "installer" : *remains.payload == 0 ? "empty installer" : "part of the installer");
    if (remains.repaired != 0)
        Append(left, remains.unrepaired == 0 ? "settings" : "some settings");
    if (remains.folder && whole && remains.unrepaired == 0)
        left = "everything";
    if (remains.elsewhere)
        Append(left, "in the current directory");
    const auto starts = static_cast<std::size_t>(exchange.payloadStarts);
    if (whole && starts == 0)
        Append(left, "not started");
    if (starts > passes)
        Append(left, "started " + std::to_string(starts) + " times in " + std::to_string(passes) + " passes");
    return left.empty() ? "nothing" : left;
}

std::string ExitOutcome(const Conduct& conduct) {
    if (conduct.hung)
        return "does not end";
    std::ostringstream text;
    if (conduct.exitCode > 0xFFFF)
        text << "0x" << std::hex;
    text << conduct.exitCode;
    return text.str();
}

std::string WindowOutcome(const Scenario& scenario, const Conduct& conduct) {
    if (scenario.IsUnattended())
        return "–";
    std::string window;
    for (const std::string& screen : conduct.screens)
        Append(window, screen);
    if (!window.empty())
        return window;
    return conduct.hung ? "no result" : "none";
}

/// Whether a run that failed, or left something undone, has a log that could be written and tells of no error.
bool EndsWithoutAWord(const Outcome& outcome, std::string_view failed) {
    if (WritesLog(failed) || outcome.log.find("ERROR: ") != std::string::npos)
        return false;
    return outcome.exitCode == "1" || (outcome.exitCode == "0" && !outcome.left.starts_with("everything"));
}

} // namespace

std::vector<std::wstring> EntriesOf(const std::string& log) {
    constexpr std::size_t TimeLength = 24;
    constexpr std::wstring_view Dash = L" - ";
    std::vector<std::wstring> entries;
    const std::wstring text = Utf16(log);
    for (std::size_t start = text.find(L"\r\n"); start != std::wstring::npos;) {
        start += 2;
        const std::size_t end = text.find(L"\r\n", start);
        const std::wstring line = text.substr(start, end - start);
        const bool isLast = end == std::wstring::npos;
        if (line.size() >= TimeLength + Dash.size() && line.compare(TimeLength, Dash.size(), Dash) == 0)
            entries.push_back(line.substr(TimeLength + Dash.size()));
        else if (line.starts_with(Dash))
            entries.push_back(line);
        else if (!isLast && !entries.empty()) // the last one was not written to its end
            entries.back() += L"\r\n" + line;
        start = end;
    }
    return entries;
}

Outcome Judge(const Scenario& scenario, const Conduct& conduct, const Remains& remains, const Exchange& exchange,
              const Entries& usual, std::uintmax_t payloadSize, std::string_view failed) {
    Outcome outcome{.exitCode = ExitOutcome(conduct),
                    .window = WindowOutcome(scenario, conduct),
                    .log = LogOutcome(remains.log, usual),
                    .left =
                        LeftOutcome(remains, exchange, std::max<std::size_t>(1, conduct.screens.size()), payloadSize),
                    .surprises = ""};
    if (conduct.exitCode == AbnormalExitCode && exchange.stepOfFailure == Step::Window) {
        outcome.window = "any"; // the worker runs beside it
        outcome.left = "what the worker has come to";
    }
    if (conduct.hung)
        Append(outcome.surprises, "does not end");
    else if (conduct.gaveUp)
        Append(outcome.surprises, "no result in time");
    else if (conduct.exitCode != AbnormalExitCode && conduct.exitCode > (scenario.IsUnattended() ? 1U : 0U))
        Append(outcome.surprises, "exit code");
    if (static_cast<std::size_t>(exchange.payloadStarts) > std::max<std::size_t>(1, conduct.screens.size()))
        Append(outcome.surprises, "an installation that nobody asked for");
    if (EndsWithoutAWord(outcome, failed))
        Append(outcome.surprises, "half done without a word");
    for (const std::wstring& dialog : conduct.dialogs)
        Append(outcome.surprises, "dialog " + ToUtf8(dialog));
    if (exchange.damagedPayloads != 0 && failed != PayloadWriter)
        Append(outcome.surprises, "a damaged payload was started");
    for (const std::wstring& setting : remains.strangeSettings)
        Append(outcome.surprises, "changed " + ToUtf8(setting));
    if (!IsValidUtf16(remains.log) && !WritesLog(failed))
        Append(outcome.surprises, "the log is not UTF-16");
    return outcome;
}
