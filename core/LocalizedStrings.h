#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The texts that the installer window shows, in the order of the language files. The first four are captions of
/// buttons, where "&" stands before the mnemonic. Blanks at an end belong to the text.
enum StringId : std::uint8_t {
    StrClose,
    StrGetHelp,
    StrRetry,
    StrStartOneNote,
    StrTempFileFailed,
    StrCheckRunningFailed,
    StrInstallFailed,
    StrReadResourceFailed,
    StrCheckingRequirements,
    StrInstallCompleted,
    StrInstalling,
    StrOneNoteRunning,
};

struct LanguageEntry {
    /// "de", or with a region "pt-BR".
    std::wstring code;
    /// The language's name in that language.
    std::wstring displayName;
};

/// The languages of core/languages/languages.txt, in its order: that in which a locale name is matched against them.
/// Built by the first call, on the main thread during start-up.
const std::vector<LanguageEntry>& SupportedLanguages();

/// Fills the table that `GetLocalizedString` reads with the texts of one of the `SupportedLanguages`, whose code is
/// `code` to the letter. Any other code changes nothing; before the first call every text is empty.
/// Main thread, before a second one exists.
void LoadLocalizedStrings(std::wstring_view code);

/// The loaded language's own text, which lives as long as the process and never changes or moves; a language that is
/// loaded later has other ones. Any thread.
const wchar_t* LocalizedText(StringId id);

/// A copy of that text. Any thread.
std::wstring GetLocalizedString(StringId id);
