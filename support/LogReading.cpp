#include "support/LogReading.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <utility>

namespace {

using enum Says;
using namespace std::chrono_literals;

// What the report says of OneNote, and of the ribbon.
constexpr std::array<std::wstring_view, 2> OneNotePrograms{
    LR"(HKCR\CLSID\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}\LocalServer32\@)",
    LR"(HKCR\CLSID\{DC67E480-C3CB-49F8-8232-60B0C2056C8E}\LocalServer32\@)",
};
constexpr std::wstring_view OneNoteLibraryVersion =
    LR"(HKCR\Interface\{452AC71A-B655-4967-A208-A4CC39DD7949}\TypeLib\Version)";
constexpr std::wstring_view OfficeLibraryVersion =
    LR"(HKCR\Interface\{000C0396-0000-0000-C000-000000000046}\TypeLib\Version)";
constexpr std::wstring_view ProxyProgram = LR"(HKCR\CLSID\{00020424-0000-0000-C000-000000000046}\InprocServer32\@)";
constexpr std::wstring_view OneNoteLibrary = L"Type library for OneNote.IApplication version ";
constexpr std::wstring_view OfficeLibrary = L"Type library for IRibbonExtensibility version ";

/// The lists of a log that repeats itself a million times stay as short as a person can read.
constexpr std::size_t MaxListLength = 20;

void AddOnce(std::vector<std::wstring>& list, std::wstring text) {
    if (list.size() < MaxListLength && std::ranges::find(list, text) == list.end())
        list.push_back(std::move(text));
}

/// What stands in the only gap of the rule's text, or in the first one.
std::wstring_view InGap(const LogRule& rule, std::wstring_view text) {
    const std::size_t gap = rule.text.find(L'…');
    const std::wstring_view behind = rule.text.substr(gap + 1);
    text.remove_prefix(std::min(gap, text.size())); // the blank before it may be missing
    return text.substr(0, text.size() - (behind.find(L'…') == std::wstring_view::npos ? behind.size() : 0));
}

/// A value of the report, without its kind and without the NUL with which it is stored. Empty for "Not found".
std::wstring_view ReportedString(std::wstring_view value) {
    for (const std::wstring_view kind : {L" (String)", L" (String expand)"}) {
        if (value.ends_with(kind)) {
            value.remove_suffix(kind.size());
            value = value.substr(0, value.find(L'\0'));
            return value.substr(0, value.find_last_not_of(L' ') + 1); // as which many editors show the NUL
        }
    }
    return {};
}

/// How many characters a string has, with its NUL: shorter ones are no paths to the installer.
std::size_t StoredLength(std::wstring_view value) {
    for (const std::wstring_view kind : {L" (String)", L" (String expand)"}) {
        if (value.ends_with(kind))
            return value.size() - kind.size();
    }
    return 0;
}

/// True when the value is one of the two views' entry of that path.
bool IsOfEitherView(std::wstring_view path, std::wstring_view native) {
    constexpr std::wstring_view Root = L"HKCR\\";
    constexpr std::wstring_view View = L"Wow6432Node\\";
    if (path.substr(0, Root.size()) == Root && path.substr(Root.size()).starts_with(View))
        return path.substr(Root.size() + View.size()) == native.substr(Root.size());
    return path == native;
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

/// The installer takes a path as it is: what has a "%", or the number of a resource at its end, names no file.
bool NamesAFile(std::wstring_view path) {
    const std::size_t name = path.find_last_of(L'\\') + 1;
    const std::wstring_view number = path.substr(name, path.find(L'\0', name) - name);
    return path.find(L'%') == std::wstring_view::npos &&
           (number.empty() || number.find_first_not_of(L"0123456789") != std::wstring_view::npos);
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
    lastValueOfBlock_ = false;
    TakeRepair(rule->says);
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
    oneNoteVersion_.clear();
    officeVersion_.clear();
    proxyIsMissing_ = false;
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

/// Its last entry may not be on disk. In the last block stand a line for each path, and what was looked at for the
/// bitness when this is the version that counts.
bool LogReading::EndsWithTheReport() const {
    if (!order_.IsInTheLastBlock())
        return false;
    if (!officeVersion_.empty() && order_.Block()->text.substr(OfficeLibrary.size()) == officeVersion_)
        return EntrySet{Is32Bit, Is64Bit, BitnessEnd}.Contains(last_->says);
    if (EntrySet{BlockEnd, FileExists, FileMissing}.Contains(last_->says))
        return files_ <= 1;
    return lastValueOfBlock_ && files_ == 0;
}

RunStep LogReading::StepBehindTheReport() const {
    if (!findings_.attended.value_or(true))
        return RunStep::Search;
    return findings_.asked ? RunStep::Question : RunStep::Window;
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
        if (const std::wstring_view version = InGap(rule, text); IsVersion(version))
            findings_.version = version;
        break;
    case CommandLine:
        findings_.commandLine = InGap(rule, text);
        findings_.attended = !HasConfiguration(findings_.commandLine);
        break;
    case Value:
        TakeValue(text);
        break;
    case Title:
        files_ = 0;
        break;
    case FileExists:
        --files_;
        break;
    case FileMissing:
        --files_;
        if (Registration* const reported = Reported(); reported != nullptr && NamesAFile(InGap(rule, text)))
            reported->fileIsMissing = true;
        break;
    case Win32Native:
    case Win64Native:
        if (Registration* const reported = Reported(); reported == &findings_.office) {
            if (const std::wstring_view path = InGap(rule, text); !path.empty())
                reported->path = path.substr(0, path.find(L'\0'));
        }
        break;
    case Is32Bit:
        findings_.asked = true;
        TakeBitness(Registration::Bitness::Is32Bit);
        break;
    case Is64Bit:
        TakeBitness(Registration::Bitness::Is64Bit);
        break;
    case PassBegins:
        BeginPass();
        break;
    case Searching:
        ++findings_.passes;
        break;
    case Found:
        process_ = InGap(rule, text);
        break;
    case NotClosed:
        NoteOneNoteError(L"OneNote's windows could not be asked to close", text);
        break;
    case NotRunning:
        if (last_ != nullptr && last_->says == Terminating)
            AddOnce(findings_.terminated, process_ == L"datebk.exe" ? L"datebk.exe" : L"onenote.exe");
        break;
    case Deleting:
        deletion_ = InGap(rule, text.substr(0, text.find(L'\n')));
        deletion_.insert(0, L"HKCU\\");
        break;
    case Updated:
        if (const std::wstring_view number = InGap(rule, text); IsNumber(number))
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

void LogReading::TakeValue(std::wstring_view text) {
    constexpr std::wstring_view Separator = L" - ";
    text.remove_prefix(std::min<std::size_t>(4, text.size()));
    const std::size_t end = text.find(Separator);
    if (end == std::wstring_view::npos)
        return;
    const std::wstring_view path = text.substr(0, end);
    const std::wstring_view kept = text.substr(end + Separator.size());
    const std::wstring value(ReportedString(kept));
    const bool isNative = path.find(L"Wow6432Node") == std::wstring_view::npos;
    lastValueOfBlock_ = !isNative && path.ends_with(L"\\FLAGS\\@");
    if ((path.ends_with(L"\\0\\Win32\\@") || path.ends_with(L"\\0\\Win64\\@")) && StoredLength(kept) >= 5)
        ++files_;
    const bool isOneNote = std::ranges::any_of(
        OneNotePrograms, [path](std::wstring_view program) { return IsOfEitherView(path, program); });
    if (isOneNote && findings_.oneNote.path.empty())
        findings_.oneNote.path = value;
    else if (IsOfEitherView(path, OneNoteLibraryVersion) && oneNoteVersion_.empty())
        oneNoteVersion_ = value;
    else if (IsOfEitherView(path, OfficeLibraryVersion) && officeVersion_.empty())
        officeVersion_ = value;
    else if (path == ProxyProgram)
        proxyIsMissing_ = value.empty();
}

/// What the present block is about, when its type library is the one that counts.
Registration* LogReading::Reported() {
    if (order_.Block() == nullptr)
        return nullptr;
    const std::wstring_view title = order_.Block()->text;
    if (title.starts_with(OneNoteLibrary) && title.substr(OneNoteLibrary.size()) == oneNoteVersion_)
        return &findings_.oneNote;
    if (title.starts_with(OfficeLibrary) && title.substr(OfficeLibrary.size()) == officeVersion_)
        return &findings_.office;
    return nullptr;
}

void LogReading::TakeBitness(Registration::Bitness bitness) {
    if (Registration* const reported = Reported())
        reported->bitness = bitness;
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

void LogReading::NoteTheMachine() {
    if (findings_.oneNote.bitness == Registration::Bitness::Is32Bit && isComplete_)
        Note(L"A 64-bit add-in does not work in a 32-bit OneNote.");
    if (proxyIsMissing_)
        Note(L"Windows is damaged: what every call to OneNote needs is not registered.");
    for (const auto& [registration, name] :
         {std::pair(&findings_.oneNote, L"OneNote's"), std::pair(&findings_.office, L"Office's")}) {
        if (registration->fileIsMissing)
            Note(std::wstring(name) + L" type library names a file that does not exist: repair Office.");
    }
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
        if (EndsWithTheReport())
            findings_.step = StepBehindTheReport();
        else if (!hasFailed_)
            findings_.step = lastIsWhole_ ? last_->next : last_->step;
        if (EndsWithTheReport() || findings_.passes != 0)
            FindWhatIsNotRegistered();
        findings_.asked = findings_.asked && findings_.attended.value_or(true);
        NoteTheMachine();
        NoteTheFile();
    }
    findings_.unknown = order_.Unknown();
    findings_.disbelieved = order_.Disbelieved();
    findings_.verdict = FindVerdict(isEmpty);
    return findings_;
}

void LogReading::FindWhatIsNotRegistered() {
    using enum Registration::Bitness;
    if (findings_.oneNote.bitness == Unknown && findings_.oneNote.path.empty())
        findings_.oneNote.bitness = NotRegistered;
    if (findings_.office.bitness == Unknown && officeVersion_.empty())
        findings_.office.bitness = NotRegistered;
}
