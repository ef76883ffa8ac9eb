#include "support/Rules.h"

#include "core/LanguageTable.h"
#include "core/LocalizedStrings.h"

#include <algorithm>
#include <array>
#include <string>

namespace {

using enum Says;

// With one of these a block of the report may be over.
constexpr EntrySet EndsOfABlock{BlockEnd, FileExists, FileMissing, BitnessEnd};
constexpr EntrySet RepairOrNot{Deleting, KeyNotFound, ValueNotFound, NotDeleted};
constexpr EntrySet APass = EntrySet::Range(PassBegins, PoliciesEnd);
constexpr EntrySet Anything = EntrySet::Range(Running, Ended);

constexpr std::array AllRules = std::to_array<LogRule>({
    {Running, L"Running 64-bit Installer on 64-bit Windows", Anything, RunStep::Report, RunStep::Report},
    {Version, L"Version …", EntrySet{Running}, RunStep::Report, RunStep::Report},
    {CommandLine, L"Command line: …", EntrySet{Version}, RunStep::Report, RunStep::Report},
    {HeadGap, L"", EntrySet{CommandLine}, RunStep::Report, RunStep::Report},
    {RegistryKeys, L"Registry keys on the client:", EntrySet{HeadGap}, RunStep::Report, RunStep::Report},
    {HeadEnd, L"", EntrySet{RegistryKeys}, RunStep::Report, RunStep::Report},

    {Title, L"ProgId for OneNote.Application", EntrySet{HeadEnd}, RunStep::Report, RunStep::Report},
    {Title, L"CLSID for OneNote.Application.14", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"CLSID for OneNote.Application.15", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"IID for OneNote.IApplication", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"Type library for OneNote.IApplication version 1.0", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"Type library for OneNote.IApplication version 1.1", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"CLSID for ProxyStub for General OLE Automation", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"IID for _IDTExtensibility2", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"Type library for _IDTExtensibility2 version 1.0", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"IID for IRibbonExtensibility", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"IID for IRibbonControl", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"IID for IRibbonUI", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"Type library for IRibbonExtensibility version 2.5", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"Type library for IRibbonExtensibility version 2.6", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"Type library for IRibbonExtensibility version 2.7", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Title, L"Type library for IRibbonExtensibility version 2.8", EndsOfABlock, RunStep::Report, RunStep::Report},
    {Value, L"    HKCR\\… - … (String)", EntrySet{Title, Value}, RunStep::Report, RunStep::Report},
    {Value, L"    HKCR\\… - … (String expand)", EntrySet{Title, Value}, RunStep::Report, RunStep::Report},
    {Value, L"    HKCR\\… - … (DWORD)", EntrySet{Title, Value}, RunStep::Report, RunStep::Report},
    {Value, L"    HKCR\\… - <no-value>", EntrySet{Title, Value}, RunStep::Report, RunStep::Report},
    {Value, L"    HKCR\\… - Not found", EntrySet{Title, Value}, RunStep::Report, RunStep::Report},
    {BlockEnd, L"", EntrySet{Value}, RunStep::Report, RunStep::Report},
    {FileExists, L"File exists: …", EntrySet{BlockEnd, FileExists, FileMissing}, RunStep::Report, RunStep::Report},
    {FileMissing, L"Error: File DOES NOT exist: …", EntrySet{BlockEnd, FileExists, FileMissing}, RunStep::Report,
     RunStep::Report},
    {BitnessGap, L"", EntrySet{BlockEnd, FileExists, FileMissing}, RunStep::Report, RunStep::Report},
    {BitnessCheck, L"Checking bitness for this type library", EntrySet{BitnessGap}, RunStep::Report, RunStep::Report},
    {Win32Native, L"Win32 Native: x86 …", EntrySet{BitnessCheck}, RunStep::Report, RunStep::Report},
    {Win32Native, L"Win32 Native: x64 …", EntrySet{BitnessCheck}, RunStep::Report, RunStep::Report},
    {Win32Wow64, L"Win32 Wow64: x86 …", EntrySet{Win32Native}, RunStep::Report, RunStep::Report},
    {Win32Wow64, L"Win32 Wow64: x64 …", EntrySet{Win32Native}, RunStep::Report, RunStep::Report},
    {Win64Native, L"Win64 Native: …", EntrySet{Win32Wow64}, RunStep::Report, RunStep::Report},
    {Win64Wow64, L"Win64 Wow64: …", EntrySet{Win64Native}, RunStep::Report, RunStep::Report},
    {Is32Bit, L"Result: x86 detected", EntrySet{Win64Wow64}, RunStep::Report, RunStep::Report},
    {Is64Bit, L"Result: x64 detected", EntrySet{Win64Wow64}, RunStep::Report, RunStep::Report},
    {BitnessEnd, L"", EntrySet{Is32Bit, Is64Bit}, RunStep::Report, RunStep::Report},

    {WorkerBegins, L"Begin processing", EndsOfABlock, RunStep::Search, RunStep::Search},
    {PassBegins, L"Begin processing", EntrySet{WorkerBegins, WaitingForSignal}, RunStep::Search, RunStep::Search},
    {Searching, L"Checking if OneNote is running", EntrySet{PassBegins}, RunStep::Search, RunStep::Search},
    {NoProcessList, L"ERROR: Failed to get list of processes: …", EntrySet{Searching}, RunStep::Search,
     RunStep::Search},
    {Found, L"Found process '…'", EntrySet{Searching}, RunStep::Search, RunStep::Search},
    {StillRunning, L"OneNote is still running. Waiting...", EntrySet{Found}, RunStep::Search, RunStep::Search},
    {Closing, L"OneNote is still running after … seconds. Attempting to close windows", EntrySet{StillRunning},
     RunStep::Search, RunStep::Search},
    {NotClosed, L"ERROR: Cannot close OneNote Windows: …", EntrySet{Closing}, RunStep::Search, RunStep::Search},
    {Terminating, L"OneNote is still running after … seconds. Attempting to terminate process",
     EntrySet{Closing, NotClosed}, RunStep::Search, RunStep::Search},
    {StillThere, L"OneNote is still running after … seconds.", EntrySet{Terminating}, RunStep::Search, RunStep::Search},
    {NotRunning, L"State: Installing - OneNote is not running, continuing with install",
     EntrySet{Searching, StillRunning, Closing, NotClosed, Terminating}, RunStep::Payload, RunStep::Payload},

    {Folder, L"Folder path is: …", EntrySet{NotRunning}, RunStep::Payload, RunStep::Payload},
    {FolderExists, L"Folder already exists", EntrySet{Folder}, RunStep::Payload, RunStep::Payload},
    {FolderMissing, L"Folder does not exist, creating...", EntrySet{Folder}, RunStep::Payload, RunStep::Payload},
    {FolderMade, L"Done.", EntrySet{FolderMissing}, RunStep::Payload, RunStep::Payload},
    {Extracting, L"Extracting installer to …", EntrySet{FolderExists, FolderMade}, RunStep::Payload, RunStep::Payload},
    {Resource, L"    Installing file at resource id: 200 to path: …", EntrySet{Extracting}, RunStep::Payload,
     RunStep::Payload},
    {Loading, L"    Loading from resource", EntrySet{Resource}, RunStep::Payload, RunStep::Payload},
    {Size, L"    Size of the file is: …", EntrySet{Loading}, RunStep::Payload, RunStep::Payload},
    {Writing, L"    Writing to the given path", EntrySet{Size}, RunStep::Payload, RunStep::Elevation},
    {Written, L"    Done.", EntrySet{Writing}, RunStep::Elevation, RunStep::ElevatedInstaller},
    {Waiting, L"Waiting for installer to finish", EntrySet{Written}, RunStep::ElevatedInstaller, RunStep::Repairs},
    {NoExitCode, L"ERROR: Failed to get the process exit code: …", EntrySet{Waiting}, RunStep::ElevatedInstaller,
     RunStep::ElevatedInstaller},
    {BadExitCode, L"ERROR: Installer reported failure: …", EntrySet{Waiting}, RunStep::ElevatedInstaller,
     RunStep::ElevatedInstaller},

    {Deleting, L"Deleting registry key: HKCU\\…", EntrySet{Waiting, Deleting, KeyNotFound, ValueNotFound, NotDeleted},
     RunStep::Repairs, RunStep::Repairs},
    {KeyNotFound, L"Key not found", EntrySet{Deleting}, RunStep::Repairs, RunStep::Repairs},
    {ValueNotFound, L"Value not found", EntrySet{Deleting}, RunStep::Repairs, RunStep::Repairs},
    {NotDeleted, L"ERROR:", EntrySet{Deleting}, RunStep::Repairs, RunStep::Repairs},
    {Settings, L"Internet Security Settings", RepairOrNot, RunStep::Protocols, RunStep::Protocols},
    {Setting, L"    HKCU\\… - … (String)", EntrySet{Settings}, RunStep::Protocols, RunStep::Protocols},
    {Setting, L"    HKCU\\… - … (String expand)", EntrySet{Settings}, RunStep::Protocols, RunStep::Protocols},
    {Setting, L"    HKCU\\… - … (DWORD)", EntrySet{Settings}, RunStep::Protocols, RunStep::Protocols},
    {Setting, L"    HKCU\\… - <no-value>", EntrySet{Settings}, RunStep::Protocols, RunStep::Protocols},
    {Setting, L"    HKCU\\… - Not found", EntrySet{Settings}, RunStep::Protocols, RunStep::Protocols},
    {SettingsEnd, L"", EntrySet{Setting}, RunStep::Protocols, RunStep::Protocols},
    {Created, L"Creating registry key: HKCU\\… = … (DWORD)", EntrySet{SettingsEnd}, RunStep::Protocols,
     RunStep::Protocols},
    {Creating, L"Creating registry key: HKCU\\…", EntrySet{SettingsEnd}, RunStep::Protocols, RunStep::Protocols},
    {Updated, L"Updated to …", EntrySet{SettingsEnd, Created}, RunStep::Protocols, RunStep::Protocols},
    {Policies, L"Internet Security Settings", EntrySet{SettingsEnd, Updated}, RunStep::Protocols, RunStep::Protocols},
    {Policy, L"    HKCU\\… - … (String)", EntrySet{Policies}, RunStep::Protocols, RunStep::Protocols},
    {Policy, L"    HKCU\\… - … (String expand)", EntrySet{Policies}, RunStep::Protocols, RunStep::Protocols},
    {Policy, L"    HKCU\\… - … (DWORD)", EntrySet{Policies}, RunStep::Protocols, RunStep::Protocols},
    {Policy, L"    HKCU\\… - <no-value>", EntrySet{Policies}, RunStep::Protocols, RunStep::Protocols},
    {Policy, L"    HKCU\\… - Not found", EntrySet{Policies}, RunStep::Protocols, RunStep::Protocols},
    {PoliciesEnd, L"", EntrySet{Policy}, RunStep::Protocols, RunStep::Protocols},
    {Complete, L"State: Complete", EntrySet{PoliciesEnd}, RunStep::User, RunStep::User},

    {Failed, L"ERROR: Installation failed:…", APass, RunStep::User, RunStep::User},
    {WaitingForSignal, L"Waiting for a signal", EntrySet{Complete, Failed, StartingOneNote, StartedOneNote, NotStarted},
     RunStep::User, RunStep::User},
    {StartingOneNote, L"Starting OneNote", EntrySet{Complete, WaitingForSignal}, RunStep::OneNoteStart,
     RunStep::OneNoteStart},
    {StartedOneNote, L"Started OneNote", EntrySet{StartingOneNote, WaitingForSignal}, RunStep::User, RunStep::User},
    {NotStarted, L"ERROR: Failed to start OneNote: …", EntrySet{StartingOneNote, WaitingForSignal}, RunStep::User,
     RunStep::User},
    {Ended, L"Exit signalled, returning from background process",
     EntrySet{WaitingForSignal, StartedOneNote, NotStarted}, RunStep::User, RunStep::User},
});

constexpr std::array AllSteps = std::to_array<StepText>({
    {RunStep::Report, L"report", L"looking at the machine."},
    {RunStep::Question, L"question",
     L"asking the user about a 32-bit OneNote. When the run has ended: the user chose the 32-bit installer, or there "
     L"could be no question or no window."},
    {RunStep::Window, L"window", L"making its window or its worker. When the run has ended, that failed."},
    {RunStep::Search, L"search", L"waiting for OneNote or Datebookery."},
    {RunStep::Payload, L"payload", L"writing the elevated installer."},
    {RunStep::Elevation, L"elevation",
     L"starting the elevated installer: Windows asked for administrator rights, or showed a message."},
    {RunStep::ElevatedInstaller, L"elevated-installer",
     L"waiting for the elevated installer, whose own log tells more."},
    {RunStep::Repairs, L"repairs", L"deleting settings that keep OneNote from loading the add-in."},
    {RunStep::Protocols, L"protocols", L"looking at the security settings."},
    {RunStep::User, L"user", L"waiting for the user."},
    {RunStep::OneNoteStart, L"onenote-start", L"starting OneNote."},
});

constexpr std::array AllCauses = std::to_array<Cause>({
    {EntrySet{NoProcessList},
     L"The search: Windows did not give the list of processes. The number is a Windows error."},
    {EntrySet{StillThere}, L"OneNote or Datebookery could not be terminated."},
    {EntrySet{FolderMissing}, L"The folder: it is protected, or a file has its name."},
    {EntrySet{Loading, Size}, L"This program was damaged, by its download, say."},
    {EntrySet{Writing},
     L"Opening the file for writing: it is protected, or a virus scanner or another copy of the installer holds it."},
    {EntrySet{Written}, L"Windows did not start the elevated installer."},
    {EntrySet{NoExitCode}, L"Nobody knows what became of the elevated installer. The number is a Windows error."},
    {EntrySet{BadExitCode}, L"The elevated installer. The number is its exit code."},
    {EntrySet{SettingsEnd, Creating, Created},
     L"The security settings could not be written. The add-in is installed all the same."},
});

constexpr std::array AllInstallationErrors = std::to_array<ErrorCode>({
    {0x80070002, 0x80070003, L"A file or folder is gone that was just there.",
     L"Try again. A virus scanner may have taken it away."},
    {0x80070005, 0x80070005, L"Access denied: a file or a setting is protected.",
     L"Look where it failed, and let the user write there."},
    {0x80070020, 0x80070020,
     L"OneNote or Datebookery still ran after it was to be terminated, or another program holds the extracted "
     L"installer or has changed it.",
     L"Restart Windows, and install before OneNote is started."},
    {0x800700c1, 0x800700c1,
     L"The extracted installer is no whole program: the disk is full, or the download was damaged.",
     L"Make room on the disk, or download the installer again."},
    {0x800704c7, 0x800704c7, L"The user refused the administrator rights.",
     L"Try again with somebody who may give them."},
    {0x8000ffff, 0x8000ffff, L"Windows did not give the list of processes.", L"Restart Windows, and try again."},
    {0xffffff9c, 0xffffff9c,
     L"The embedded installer can't be read: the download was damaged. The elevated installer may say it too.",
     L"Download the installer again."},
    {0xffffff9d, 0xffffff9d,
     L"A temporary file can't be created, says the elevated installer; or the folder for it can't.",
     L"Make room on the disk, and see whether the temporary folder can be written."},
    {0x0, 0xffff, L"Mostly the exit code of the elevated installer, which has meanings of its own.",
     L"Read the elevated installer's own log."},
});

constexpr std::array AllOneNoteErrors = std::to_array<ErrorCode>({
    {0x80040154, 0x80040154, L"OneNote is not registered: it is missing, or only the app of Windows 10.",
     L"Install the OneNote of Microsoft Office."},
    {0x80040155, 0x80040155, L"OneNote is registered in part.", L"Repair Office."},
    {0x80029c4a, 0x80029c4a, L"OneNote is registered in part.", L"Repair Office."},
    {0x8002801d, 0x8002801d, L"OneNote is registered in part.", L"Repair Office."},
    {0x80004002, 0x80004002, L"OneNote is registered in part.", L"Repair Office."},
    {0x80080005, 0x80080005, L"OneNote runs with other rights than the installer.",
     L"Close OneNote by hand before installing."},
    {0x800706ba, 0x800706ba, L"OneNote ended during the call.", L"Nothing needs to be done."},
    {0x800706be, 0x800706be, L"OneNote ended during the call.", L"Nothing needs to be done."},
    {0x80010001, 0x80010001, L"OneNote is busy and turned the call away.", L"Close OneNote by hand before installing."},
    {0x8001010a, 0x8001010a, L"OneNote is busy and turned the call away.", L"Close OneNote by hand before installing."},
    {0x80042030, 0x80042030, L"OneNote shows a dialog that waits for an answer.", L"Answer it, and close OneNote."},
});

constexpr std::wstring_view FailurePrefix = L"ERROR: ";

constexpr wchar_t AnyText = L'…';

std::wstring_view WithoutBlanksAtEnd(std::wstring_view text) {
    return text.substr(0, text.find_last_not_of(L' ') + 1);
}

/// The text with which an entry begins that says in this language that the installation failed.
std::wstring FailureText(const LanguageRow& language) {
    return std::wstring(FailurePrefix).append(WithoutBlanksAtEnd(language.texts[StrInstallFailed]));
}

/// The pieces between the gaps stand in the entry in their order, the first one at its beginning, the last one at its
/// end.
bool FitsGaps(std::wstring_view entry, std::wstring_view quote) {
    std::size_t gap = quote.find(AnyText);
    if (gap + 1 == quote.size() && entry == WithoutBlanksAtEnd(quote.substr(0, gap)))
        return true; // an editor has taken the blank away behind which there is nothing
    if (!entry.starts_with(quote.substr(0, gap)))
        return false;
    entry.remove_prefix(gap);
    for (;;) {
        quote.remove_prefix(gap + 1);
        gap = quote.find(AnyText);
        if (gap == std::wstring_view::npos)
            return entry.ends_with(quote);
        const std::size_t piece = entry.find(quote.substr(0, gap));
        if (piece == std::wstring_view::npos)
            return false;
        entry.remove_prefix(piece + gap);
    }
}

} // namespace

bool LogRule::Matches(std::wstring_view entry) const {
    if (says == Failed)
        return !FailureLanguage(entry).empty();
    if (!text.empty() && (entry.empty() || entry.front() != text.front()))
        return false; // most of them, at once
    return text.find(AnyText) == std::wstring_view::npos ? WithoutBlanksAtEnd(entry) == text : FitsGaps(entry, text);
}

std::wstring_view LogRule::InGap(std::wstring_view entry) const {
    const std::size_t gap = text.find(AnyText);
    const std::wstring_view behind = text.substr(gap + 1);
    entry.remove_prefix(std::min(gap, entry.size())); // the blank before it may be missing
    return entry.substr(0, entry.size() - (behind.find(AnyText) == std::wstring_view::npos ? behind.size() : 0));
}

bool LogRule::MayBegin(std::wstring_view entry) const {
    if (says == Failed) {
        return std::ranges::any_of(
            LanguageTable, [entry](const LanguageRow& language) { return FailureText(language).starts_with(entry); });
    }
    const std::wstring_view beginning = text.substr(0, text.find(AnyText));
    return beginning.starts_with(entry) || (beginning.size() < text.size() && entry.starts_with(beginning));
}

std::span<const StepText> StepTexts() {
    return AllSteps;
}

std::span<const LogRule> LogRules() {
    return AllRules;
}

std::wstring_view FailureLanguage(std::wstring_view entry) {
    if (!entry.starts_with(FailurePrefix))
        return {};
    const std::wstring_view firstLine = WithoutBlanksAtEnd(entry.substr(0, entry.find(L'\n')));
    for (const LanguageRow& language : LanguageTable) {
        if (firstLine == FailureText(language))
            return language.code;
    }
    return {};
}

std::span<const Cause> Causes() {
    return AllCauses;
}

std::span<const ErrorCode> InstallationErrors() {
    return AllInstallationErrors;
}

std::span<const ErrorCode> OneNoteErrors() {
    return AllOneNoteErrors;
}

const ErrorCode* FindError(std::span<const ErrorCode> errors, std::uint32_t code) {
    const auto found = std::ranges::find_if(
        errors, [code](const ErrorCode& error) { return error.first <= code && code <= error.last; });
    return found != errors.end() ? &*found : nullptr;
}
