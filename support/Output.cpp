#include "support/Output.h"

#include <windows.h>

#include <strsafe.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace {

using Lines = std::vector<std::wstring>;

constexpr std::array<std::wstring_view, 6> VerdictNames{L"installed",  L"failed",  L"asked",
                                                        L"unfinished", L"foreign", L"unreadable"};

/// As printf; at most 127 characters.
template <typename... Values>
std::wstring Printed(const wchar_t* format, Values... values) {
    std::array<wchar_t, 128> text{};
    StringCchPrintfW(text.data(), text.size(), format, values...);
    return text.data();
}

std::wstring CodeText(const Findings& findings) {
    return findings.code ? Printed(L"0x%lx", static_cast<unsigned long>(*findings.code)) : std::wstring();
}

/// "2026-11-21T21:14:32"; empty when the log has no time.
std::wstring TimeText(const Findings& findings) {
    if (!findings.begun)
        return {};
    const auto day = std::chrono::floor<std::chrono::days>(*findings.begun);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(*findings.begun - day);
    return Printed(L"%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                   static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
                   static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
}

std::chrono::seconds Lasted(const Findings& findings) {
    return std::accumulate(findings.took.begin(), findings.took.end(), std::chrono::seconds(0));
}

/// "1 min 50 s"
std::wstring DurationText(std::chrono::seconds duration) {
    const auto minutes = std::chrono::duration_cast<std::chrono::minutes>(duration);
    const std::wstring seconds = std::to_wstring((duration - minutes).count()) + L" s";
    return minutes.count() != 0 ? std::to_wstring(minutes.count()) + L" min " + seconds : seconds;
}

std::wstring_view BitnessText(Registration::Bitness bitness) {
    switch (bitness) {
    case Registration::Bitness::NotRegistered:
        return L"not registered";
    case Registration::Bitness::Is32Bit:
        return L"32-bit";
    case Registration::Bitness::Is64Bit:
        return L"64-bit";
    case Registration::Bitness::Unknown:
        break;
    }
    return L"unknown";
}

std::wstring RegistrationText(const Registration& registration) {
    std::wstring text(BitnessText(registration.bitness));
    return registration.path.empty() ? text : text + L": " + registration.path;
}

bool HasStep(const Findings& findings) {
    return findings.verdict == Verdict::Failed || findings.verdict == Verdict::Unfinished ||
           findings.verdict == Verdict::Asked;
}

const ErrorCode* Error(const Findings& findings) {
    return findings.code ? FindError(InstallationErrors(), *findings.code) : nullptr;
}

std::wstring Meaning(const Findings& findings) {
    if (const ErrorCode* const error = Error(findings))
        return error->meaning;
    if (findings.verdict == Verdict::Unfinished || findings.verdict == Verdict::Asked) {
        return std::wstring(L"The installer was ") + StepTexts()[static_cast<std::size_t>(findings.step)].sentence;
    }
    return findings.verdict == Verdict::Unreadable ? findings.message : L"";
}

std::wstring Advice(const Findings& findings) {
    const ErrorCode* const error = Error(findings);
    return error != nullptr ? error->advice : L"";
}

std::wstring Joined(const Lines& list, const wchar_t* separator) {
    std::wstring text;
    for (const std::wstring& item : list)
        text.append(&item != &list.front() ? separator : L"").append(item);
    return text;
}

// For a person.

/// A console takes some of these for commands.
std::wstring WithoutControls(std::wstring text) {
    std::ranges::replace_if(
        text, [](wchar_t character) { return character < L' ' || (character >= 0x7F && character <= 0x9F); },
        L'\xFFFD');
    return text;
}

std::wstring Row(const wchar_t* title, const std::wstring& text) {
    return text.empty() ? std::wstring() : Printed(L"%-12s", title) + WithoutControls(text) + L"\r\n";
}

std::wstring Rows(const wchar_t* title, const Lines& list) {
    std::wstring rows;
    for (const std::wstring& item : list)
        rows += Row(rows.empty() ? title : L"", item);
    return rows;
}

std::wstring ResultText(const Findings& findings) {
    switch (findings.verdict) {
    case Verdict::Installed:
        return L"The installation succeeded.";
    case Verdict::Failed:
        return L"The installation failed" + (findings.code ? L" with " + CodeText(findings) : std::wstring()) + L'.';
    case Verdict::Asked:
        return L"The log ends at the question about a 32-bit OneNote.";
    case Verdict::Unfinished:
        return L"The log ends in the middle: the run was cut off, or still goes on.";
    case Verdict::Foreign:
        return L"This is no log of the installer.";
    case Verdict::Unreadable:
        return L"The file can't be read.";
    }
    return {};
}

std::wstring ModeText(const Findings& findings) {
    if (!findings.attended)
        return {};
    if (!*findings.attended)
        return L"without a window: " + findings.commandLine;
    return L"with a window" + (findings.language.empty() ? std::wstring() : L", language: " + findings.language);
}

std::wstring TimeForAPerson(const Findings& findings) {
    std::wstring text = TimeText(findings);
    std::ranges::replace(text, L'T', L' ');
    return text;
}

std::wstring BegunText(const Findings& findings) {
    if (!findings.begun)
        return {};
    return TimeForAPerson(findings) + L", for " + DurationText(Lasted(findings)) + L", passes: " +
           std::to_wstring(findings.passes);
}

std::wstring QuestionText(const Findings& findings) {
    if (!findings.asked)
        return {};
    return findings.passes != 0 ? L"The user was asked about a 32-bit OneNote, and went on."
                                : L"The user was asked about a 32-bit OneNote.";
}

Lines StepTimes(const Findings& findings, std::wstring (*durationText)(std::chrono::seconds)) {
    Lines steps;
    for (const StepText& step : StepTexts()) {
        const std::chrono::seconds took = findings.took.at(static_cast<std::size_t>(step.step));
        if (took.count() != 0)
            steps.push_back(step.name + (L' ' + durationText(took)));
    }
    return steps;
}

std::wstring Page(const std::filesystem::path& file, const Findings& findings) {
    std::wstring page = WithoutControls(file.wstring()) + L"\r\n\r\n";
    page += Row(L"Result", ResultText(findings));
    page += Row(L"Step", StepName(findings));
    page += Row(L"Cause", findings.cause != nullptr ? findings.cause : L"");
    page += Row(L"Meaning", Meaning(findings));
    page += Row(L"What to do", Advice(findings));
    if (findings.verdict == Verdict::Failed)
        page += Row(L"Message", findings.message);
    page += Row(L"Version", findings.version);
    page += Row(L"Begun", BegunText(findings));
    page += Row(L"Mode", ModeText(findings));
    if (findings.begun) {
        page += Row(L"OneNote", RegistrationText(findings.oneNote));
        page += Row(L"Office", RegistrationText(findings.office));
    }
    page += Row(L"Question", QuestionText(findings));
    page += Rows(L"Terminated", findings.terminated);
    page += Rows(L"Repaired", findings.repaired);
    page += Row(L"Steps", Joined(StepTimes(findings, DurationText), L", "));
    return page + Rows(L"Note", findings.notes);
}

std::wstring Line(const std::filesystem::path& file, const Findings& findings) {
    return Printed(L"%-10s  %-10s  %-18s  %-8s  %-19s  ", VerdictName(findings.verdict).data(),
                   CodeText(findings).c_str(), StepName(findings).c_str(), findings.version.c_str(),
                   TimeForAPerson(findings).c_str()) +
           WithoutControls(file.wstring()) + L"\r\n";
}

// For machines.

/// The same in JSON and CSV, where a list's items are separated by "; ".
struct Field {
    enum class Kind : std::uint8_t { Text, Number, Truth, List, Times };

    const wchar_t* name;
    Kind kind;
    Lines values;
};

Field Text(const wchar_t* name, std::wstring value) {
    return {name, Field::Kind::Text, {std::move(value)}};
}

Field Number(const wchar_t* name, long long value) {
    return {name, Field::Kind::Number, {std::to_wstring(value)}};
}

Field Truth(const wchar_t* name, std::optional<bool> value) {
    return {name, Field::Kind::Truth, {value ? *value ? L"true" : L"false" : L""}};
}

Field List(const wchar_t* name, const Lines& values) {
    return {name, Field::Kind::List, values};
}

/// "search 61", in seconds.
Field Times(const wchar_t* name, const Findings& findings) {
    return {name, Field::Kind::Times,
            StepTimes(findings, [](std::chrono::seconds took) { return std::to_wstring(took.count()); })};
}

std::vector<Field> FieldsOf(const std::filesystem::path& file, const Findings& findings) {
    return {Text(L"file", file.wstring()),
            Text(L"verdict", std::wstring(VerdictName(findings.verdict))),
            Text(L"code", CodeText(findings)),
            Text(L"step", StepName(findings)),
            Text(L"cause", findings.cause != nullptr ? findings.cause : L""),
            Text(L"meaning", Meaning(findings)),
            Text(L"advice", Advice(findings)),
            Text(L"message", findings.message),
            Text(L"version", findings.version),
            Text(L"begun", TimeText(findings)),
            Number(L"seconds", Lasted(findings).count()),
            Truth(L"attended", findings.attended),
            Text(L"commandLine", findings.commandLine),
            Text(L"language", findings.language),
            Truth(L"asked", findings.asked),
            Number(L"passes", findings.passes),
            Text(L"oneNote", std::wstring(BitnessText(findings.oneNote.bitness))),
            Text(L"oneNotePath", findings.oneNote.path),
            Text(L"office", std::wstring(BitnessText(findings.office.bitness))),
            Text(L"officePath", findings.office.path),
            List(L"terminated", findings.terminated),
            List(L"repaired", findings.repaired),
            Times(L"steps", findings),
            Number(L"unknown", static_cast<long long>(findings.unknown)),
            Number(L"disbelieved", static_cast<long long>(findings.disbelieved)),
            List(L"notes", findings.notes)};
}

std::wstring CsvField(std::wstring text) {
    if (!text.empty() && std::wstring_view(L"=+-@\t").find(text.front()) != std::wstring_view::npos)
        text.insert(0, 1, L'\''); // a spreadsheet would take it for a formula
    for (std::size_t quote = text.find(L'"'); quote != std::wstring::npos; quote = text.find(L'"', quote + 2))
        text.insert(quote, 1, L'"');
    return text.find_first_of(L",\"\r\n") != std::wstring::npos ? L'"' + text + L'"' : text;
}

std::wstring CsvLine(const std::vector<Field>& fields) {
    Lines line;
    std::ranges::transform(fields, std::back_inserter(line),
                           [](const Field& field) { return CsvField(Joined(field.values, L"; ")); });
    return Joined(line, L",") + L"\r\n";
}

std::wstring CsvHeader() {
    Lines names;
    for (const Field& field : FieldsOf({}, {}))
        names.emplace_back(field.name);
    return Joined(names, L",") + L"\r\n";
}

std::wstring JsonString(const std::wstring& text) {
    std::wstring json = L"\"";
    for (const wchar_t character : text) {
        if (character == L'"' || character == L'\\')
            json.append({L'\\', character});
        else if (character < L' ')
            json += Printed(L"\\u%04x", static_cast<unsigned>(character));
        else
            json += character;
    }
    return json + L'"';
}

/// "search 61" is the member "search": 61.
std::wstring JsonTime(const std::wstring& time) {
    const std::size_t end = time.find(L' ');
    return JsonString(time.substr(0, end)) + L":" + time.substr(end);
}

std::wstring JsonValue(const Field& field) {
    Lines values;
    switch (field.kind) {
    case Field::Kind::Number:
    case Field::Kind::Truth:
        return field.values.front().empty() ? L"null" : field.values.front();
    case Field::Kind::Text:
        return JsonString(field.values.front());
    case Field::Kind::List:
        std::ranges::transform(field.values, std::back_inserter(values), JsonString);
        return L'[' + Joined(values, L", ") + L']';
    case Field::Kind::Times:
        std::ranges::transform(field.values, std::back_inserter(values), JsonTime);
        return L'{' + Joined(values, L", ") + L'}';
    }
    return {};
}

std::wstring JsonObject(const std::vector<Field>& fields) {
    Lines members;
    std::ranges::transform(fields, std::back_inserter(members), [](const Field& field) {
        return L"    " + JsonString(field.name) + L": " + JsonValue(field);
    });
    return L"  {\r\n" + Joined(members, L",\r\n") + L"\r\n  }";
}

} // namespace

std::wstring OutputBegin(Format format) {
    if (format == Format::Csv)
        return L'\xFEFF' + CsvHeader(); // without the mark spreadsheets take the bytes for ANSI
    return format == Format::Json ? L"[" : L"";
}

std::wstring OutputOf(Format format, const std::filesystem::path& file, const Findings& findings, bool isFirst) {
    switch (format) {
    case Format::Page:
        return Page(file, findings);
    case Format::Line:
        return Line(file, findings);
    case Format::Json:
        return (isFirst ? L"\r\n" : L",\r\n") + JsonObject(FieldsOf(file, findings));
    case Format::Csv:
        return CsvLine(FieldsOf(file, findings));
    }
    return {};
}

std::wstring OutputEnd(Format format) {
    return format == Format::Json ? L"\r\n]\r\n" : L"";
}

std::wstring_view VerdictName(Verdict verdict) {
    return VerdictNames.at(static_cast<std::size_t>(verdict));
}

std::wstring StepName(const Findings& findings) {
    return HasStep(findings) ? StepTexts()[static_cast<std::size_t>(findings.step)].name : L"";
}
