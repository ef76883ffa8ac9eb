#include "support/LogReading.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace {

using enum Says;
using namespace std::chrono_literals;

/// The lists of a log that repeats itself a million times stay as short as a person can read.
constexpr std::size_t MaxListLength = 20;

void AddOnce(std::vector<std::wstring>& list, std::wstring text) {
    if (list.size() < MaxListLength && std::ranges::find(list, text) == list.end())
        list.push_back(std::move(text));
}

/// As the installer reads its command line: the last argument is no option, and of several paths the last one counts.
bool HasConfiguration(const std::wstring& commandLine) {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> arguments(CommandLineToArgvW(commandLine.c_str(), &count),
                                                                    &LocalFree);
    bool isGiven = false;
    for (int index = 0; index < count - 1; ++index) {
        if (std::wstring_view(arguments.get()[index]) == L"/config")
            isGiven = *arguments.get()[index + 1] != L'\0';
    }
    return isGiven;
}

bool IsNumber(std::wstring_view text) {
    return !text.empty() && text.size() < 16 && text.find_first_not_of(L"-0123456789") == std::wstring_view::npos;
}

bool IsVersion(std::wstring_view text) {
    return !text.empty() && text.size() < 32 && text.find_first_not_of(L"0123456789.") == std::wstring_view::npos;
}

} // namespace

void LogReading::Take(const LogEntry& entry) {
    const auto texts = IsMixedUp(entry) ? TakeApart(entry.text) : std::nullopt;
    if (!texts) {
        TakeOne(entry);
        return;
    }
    bool areBelieved = true;
    for (const std::wstring& text : *texts)
        areBelieved = TakeOne({.time = entry.time, .text = text, .whole = true}) && areBelieved;
    wereInterleaved_ = wereInterleaved_ || areBelieved;
}

/// Two threads write behind a pass, and what comes is more or less than one entry.
bool LogReading::IsMixedUp(const LogEntry& entry) const {
    const bool isKnown = !entry.text.empty() && std::ranges::any_of(LogRules(), [&entry](const LogRule& rule) {
        return rule.Matches(entry.text);
    });
    if (last_ != nullptr && last_->says == PoliciesEnd)
        return !isKnown && !entry.text.empty();
    return order_.IsBehindAPass() && entry.whole && !isKnown;
}

/// False when it is not believed.
bool LogReading::TakeOne(const LogEntry& entry) {
    const LogRule* const rule = order_.Take(entry);
    isAtItsBeginning_ = last_ == nullptr && !entry.whole && LogRules().front().MayBegin(entry.text);
    if (rule == nullptr)
        return false;
    if (rule->says == Running || last_ == nullptr)
        BeginRun(*rule, entry);
    if (order_.WentBack())
        GoBack(rule->says);
    PassTime(*rule, entry.time);
    TakeRepair(rule->says);
    if (rule->says <= BitnessEnd)
        machine_.Take(*rule, order_.Block(), entry.text);
    Act(*rule, entry.text);
    last_ = rule;
    lastIsWhole_ = entry.whole;
    unknownSoFar_ = order_.Unknown();
    return true;
}

void LogReading::BeginRun(const LogRule& rule, const LogEntry& entry) {
    findings_ = Findings{};
    findings_.begun = entry.time;
    lastTime_ = entry.time;
    beginningIsMissing_ = rule.says != Running;
    machine_ = MachineReading();
    clockWentBack_ = false;
    wereInterleaved_ = false;
    last_ = nullptr;
    ForgetPasses();
    ++runs_;
}

void LogReading::BeginPass() {
    isComplete_ = false;
    hasFailed_ = false;
    findings_.code.reset();
    findings_.message.clear();
    findings_.cause = nullptr;
}

void LogReading::ForgetPasses() {
    BeginPass();
    findings_.passes = 0;
    findings_.terminated.clear();
    findings_.repaired.clear();
    findings_.notes.clear();
    process_.clear();
    deletion_.clear();
}

void LogReading::GoBack(Says says) {
    if (says <= PassBegins)
        ForgetPasses();
    else
        BeginPass();
}

void LogReading::PassTime(const LogRule& rule, std::chrono::local_seconds time) {
    const std::chrono::seconds passed = time - lastTime_;
    const RunStep step = rule.says == WorkerBegins ? StepBehindTheReport() : last_ != nullptr ? last_->step : rule.step;
    if (passed < 0s)
        clockWentBack_ = true;
    else
        findings_.took.at(static_cast<std::size_t>(step)) += passed;
    lastTime_ = time;
}

RunStep LogReading::StepBehindTheReport() const {
    if (!findings_.attended.value_or(true))
        return RunStep::Search;
    return machine_.Is32Bit() ? RunStep::Question : RunStep::Window;
}

/// A setting was there when nothing is said behind its deletion.
void LogReading::TakeRepair(Says says) {
    if (deletion_.empty())
        return;
    if (says == NotDeleted)
        Note(deletion_ + L" could not be deleted.");
    else if (says != KeyNotFound && says != ValueNotFound)
        AddOnce(findings_.repaired, deletion_);
    deletion_.clear();
}

void LogReading::Act(const LogRule& rule, const std::wstring& text) {
    switch (rule.says) {
    case Version:
        if (const std::wstring_view version = rule.InGap(text); IsVersion(version))
            findings_.version = version;
        break;
    case CommandLine:
        findings_.commandLine = rule.InGap(text);
        findings_.attended = !HasConfiguration(findings_.commandLine);
        break;
    case PassBegins:
        BeginPass();
        break;
    case Searching:
        ++findings_.passes;
        break;
    case Found:
        process_ = rule.InGap(text);
        break;
    case NotClosed:
        NoteOneNoteError(L"OneNote's windows could not be asked to close", text);
        break;
    case NotRunning:
        if (last_ != nullptr && last_->says == Terminating)
            AddOnce(findings_.terminated, process_ == L"datebk.exe" ? L"datebk.exe" : L"onenote.exe");
        break;
    case Deleting:
        deletion_ = rule.InGap(text.substr(0, text.find(L'\n')));
        deletion_.insert(0, L"HKCU\\");
        break;
    case Updated:
        if (const std::wstring_view number = rule.InGap(text); IsNumber(number))
            AddOnce(findings_.repaired, L"SecureProtocols = " + std::wstring(number));
        break;
    case Complete:
        isComplete_ = true;
        hasFailed_ = false;
        break;
    case Failed:
        TakeFailure(last_, text);
        break;
    case WaitingForSignal:
        findings_.attended = true;
        break;
    case StartedOneNote:
        Note(L"The user started OneNote from the window.");
        break;
    case NotStarted:
        NoteOneNoteError(L"OneNote could not be started from the window", text);
        break;
    default:
        break;
    }
}

void LogReading::TakeFailure(const LogRule* behind, const std::wstring& text) {
    hasFailed_ = true;
    isComplete_ = false;
    findings_.code = CodeAtEnd(text);
    findings_.language = FailureLanguage(text);
    const std::size_t message = text.find_first_not_of(L'\n', text.find(L'\n'));
    findings_.message = message != std::wstring::npos ? text.substr(message) : L"";
    if (behind == nullptr || order_.Unknown() != unknownSoFar_)
        return; // who knows what it stands behind
    findings_.step = behind->step;
    const auto cause = std::ranges::find_if(
        Causes(), [behind](const Cause& candidate) { return candidate.behind.Contains(behind->says); });
    if (cause != Causes().end())
        findings_.cause = cause->sentence;
}

void LogReading::Note(std::wstring text) {
    AddOnce(findings_.notes, std::move(text));
}

void LogReading::NoteOneNoteError(const wchar_t* what, std::wstring_view text) {
    const auto code = CodeAtEnd(text);
    const ErrorCode* const error = code ? FindError(OneNoteErrors(), *code) : nullptr;
    const std::wstring description(text.substr(std::min(text.size(), text.find(L": ", text.find(L": ") + 1) + 2)));
    Note(std::wstring(what) + L": " + description +
         (error != nullptr ? std::wstring(L" ") + error->meaning + L' ' + error->advice : std::wstring()));
}

Verdict LogReading::FindVerdict(bool isEmpty) const {
    if (last_ == nullptr)
        return isEmpty || isAtItsBeginning_ ? Verdict::Unfinished : Verdict::Foreign;
    if (isComplete_)
        return Verdict::Installed;
    if (hasFailed_)
        return Verdict::Failed;
    return findings_.step == RunStep::Question ? Verdict::Asked : Verdict::Unfinished;
}

void LogReading::NoteTheFile() {
    if (runs_ > 1)
        Note(L"There are " + std::to_wstring(runs_) + L" runs in this file; this is the last one.");
    if (beginningIsMissing_)
        Note(L"The beginning of the log is missing.");
    if (wereInterleaved_)
        Note(L"Two threads wrote at the same time, and mixed up their entries.");
    if (clockWentBack_)
        Note(L"The clock was set back meanwhile: the times are not to be relied on.");
    if (const std::size_t count = order_.Disbelieved(); count != 0) {
        Note(L"Entries in places where the installer writes none: " + std::to_wstring(count) +
             L". They were not believed: a string imitates them, or parts of the log are missing.");
    }
    if (const std::size_t count = order_.Unknown(); count != 0) {
        Note(L"Entries unknown to this reader: " + std::to_wstring(count) +
             L". The log may be of another version. The first one: " + order_.FirstUnknown().substr(0, 200));
    }
}

Findings LogReading::Finish(bool isEmpty) {
    if (last_ != nullptr) {
        const bool endsWithTheReport = order_.IsInTheLastBlock() && machine_.EndsWith(last_->says);
        if (endsWithTheReport)
            findings_.step = StepBehindTheReport();
        else if (!hasFailed_)
            findings_.step = lastIsWhole_ ? last_->next : last_->step;
        machine_.Tell(endsWithTheReport || findings_.passes != 0, findings_);
        findings_.asked = machine_.Is32Bit() && findings_.attended.value_or(true);
        if (findings_.oneNote.bitness == Registration::Bitness::Is32Bit && isComplete_)
            Note(L"A 64-bit add-in does not work in a 32-bit OneNote.");
        NoteTheFile();
    }
    findings_.unknown = order_.Unknown();
    findings_.disbelieved = order_.Disbelieved();
    findings_.verdict = FindVerdict(isEmpty);
    return findings_;
}
