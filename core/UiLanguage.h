#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

// Which of the `SupportedLanguages` the installer speaks. Main thread, before a second one exists.

/// Microsoft Office's language for the current user, of the newest Office that names a supported one; else Windows'
/// language for that user; else "en". Throws no `_com_error`: settings that can't be read count as missing.
std::wstring SelectUiLanguage();

/// True, with `code` set, when the Office of that major version (16, say) is set to a supported language or falls back
/// to one. Of the fallback's strings only the first one counts, which may hold several numbers separated by ";".
bool OfficeUiLanguage(int version, std::wstring& code);

/// True, with `code` set, when a supported code is the start of the locale's name ("de-DE"), to the letter.
bool MatchLocaleName(std::wstring_view localeName, std::wstring& code);

/// `MatchLocaleName` for the locale of an identifier (1031, say). False for one that Windows doesn't know.
bool MatchLcid(LCID lcid, std::wstring& code);

/// What stands before, between and after the separators, in order; empty pieces too.
std::vector<std::wstring> SplitText(std::wstring_view text, std::wstring_view separator);
