#pragma once

#include <cstdint>
#include <span>
#include <string_view>

/// What an installer does at a time, in the order of a run.
enum class RunStep : std::uint8_t {
    Report,
    Question,
    Window,
    Search,
    Payload,
    Elevation,
    ElevatedInstaller,
    Repairs,
    Protocols,
    User,
    OneNoteStart,
};

struct StepText {
    RunStep step;
    const wchar_t* name;
    /// What it was doing, in the words of docs/log.md.
    const wchar_t* sentence;
};

/// A row for every step, in their order.
std::span<const StepText> StepTexts();

/// What an entry of the log says. Those that a block of the report repeats have one name.
enum class Says : std::uint8_t {
    Running,
    Version,
    CommandLine,
    HeadGap,
    RegistryKeys,
    HeadEnd,
    Title,
    Value,
    BlockEnd,
    FileExists,
    FileMissing,
    BitnessGap,
    BitnessCheck,
    Win32Native,
    Win32Wow64,
    Win64Native,
    Win64Wow64,
    Is32Bit,
    Is64Bit,
    BitnessEnd,
    WorkerBegins,
    PassBegins,
    Searching,
    NoProcessList,
    Found,
    StillRunning,
    Closing,
    NotClosed,
    Terminating,
    StillThere,
    NotRunning,
    Folder,
    FolderExists,
    FolderMissing,
    FolderMade,
    Extracting,
    Resource,
    Loading,
    Size,
    Writing,
    Written,
    Waiting,
    NoExitCode,
    BadExitCode,
    Deleting,
    KeyNotFound,
    ValueNotFound,
    NotDeleted,
    Settings,
    Setting,
    SettingsEnd,
    Creating,
    Created,
    Updated,
    Policies,
    Policy,
    PoliciesEnd,
    Complete,
    Failed,
    WaitingForSignal,
    StartingOneNote,
    StartedOneNote,
    NotStarted,
    Ended,
};

/// Some of these.
class EntrySet {
public:
    template <typename... Each>
    constexpr explicit EntrySet(Each... each) : bits_((Bit(each) | ... | 0)) {}

    /// From the first one to the last one, as they stand above.
    static constexpr EntrySet Range(Says first, Says last) {
        EntrySet entries;
        for (unsigned says = static_cast<unsigned>(first); says <= static_cast<unsigned>(last); ++says)
            entries.bits_ |= Bit(static_cast<Says>(says));
        return entries;
    }

    constexpr bool Contains(Says says) const { return (bits_ & Bit(says)) != 0; }

private:
    static constexpr std::uint64_t Bit(Says says) { return std::uint64_t{1} << static_cast<unsigned>(says); }

    std::uint64_t bits_;
};

/// An entry of the log, as docs/log.md quotes it.
struct LogRule {
    Says says;
    /// "…" stands for any text. Blanks at the end of an entry don't count.
    std::wstring_view text;
    /// Right behind which it may stand. The titles of the report's blocks stand in the order of their rules too.
    EntrySet after;
    /// What the installer does once it has begun the entry.
    RunStep step;
    /// What it was doing when the log ends with this entry: the next one was begun, but is not on disk.
    RunStep next;

    /// A failure is recognised in every language: see `FailureLanguage`.
    bool Matches(std::wstring_view entry) const;

    /// What stands in the only gap of an entry that matches, or in the first of several and behind it.
    std::wstring_view InGap(std::wstring_view entry) const;

    /// True for what may be left of the entry in a log that is cut off.
    bool MayBegin(std::wstring_view entry) const;
};

/// A rule for every entry that the installer writes, in the order of docs/log.md.
std::span<const LogRule> LogRules();

/// The code of the language in which an entry says that the installation failed ("de"); empty when it says something
/// else.
std::wstring_view FailureLanguage(std::wstring_view entry);

/// What failed when the failure stands right behind one of these entries, in the words of docs/log.md.
struct Cause {
    EntrySet behind;
    const wchar_t* sentence;
};

std::span<const Cause> Causes();

/// What the codes from `first` to `last` mean, and what to do, in the words of docs/log.md.
struct ErrorCode {
    std::uint32_t first;
    std::uint32_t last;
    const wchar_t* meaning;
    const wchar_t* advice;
};

/// Those with which an installation fails.
std::span<const ErrorCode> InstallationErrors();

/// Those of calls to OneNote, which make no installation fail.
std::span<const ErrorCode> OneNoteErrors();

/// Null when the table doesn't know the code.
const ErrorCode* FindError(std::span<const ErrorCode> errors, std::uint32_t code);
