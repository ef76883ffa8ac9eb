#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

// Which of the `SupportedLanguages` the installer speaks. Main thread, before a second one exists.

/// Microsoft Office's language for the current user, of the newest Office that names a supported one; else that of the
/// user's Windows locale; else "en". Throws no `_com_error`: a setting that can't be read counts as missing, and an
/// error that does come up ends the search with "en".
std::wstring SelectUiLanguage();

/// True, with `code` set, when the Office of that major version (16, say) is set to a supported language or falls back
/// to one. The fallback's data is split at ";", and each piece is a number up to its first NUL. So of several strings
/// the first one counts, and of a later one only what follows a ";" in it.
bool OfficeUiLanguage(int version, std::wstring& code);

/// True, with `code` set, when a supported code is the start of the locale's name ("de-DE"), to the letter.
bool MatchLocaleName(std::wstring_view localeName, std::wstring& code);

/// `MatchLocaleName` for the locale of an identifier (1031, say). False for 0 and for one that Windows doesn't know.
bool MatchLcid(LCID lcid, std::wstring& code);

/// What stands before, between and after the separators, in order; empty pieces too. `separator` is not empty.
std::vector<std::wstring> SplitText(std::wstring_view text, std::wstring_view separator);
