#pragma once

#include <windows.h>

#include <comdef.h>

#include <map>
#include <string>

// Errors travel as `_com_error`, which carries an HRESULT and, when the failing object gave one, its error information.

// The program's own error codes; the elevated installer may return them as its exit code too.

/// The embedded elevated installer can't be read.
inline constexpr HRESULT ErrorReadResource = -100;

/// The folder for the elevated installer can't be created, and Windows gave no code.
inline constexpr HRESULT ErrorTempFile = -99;

/// The user's texts for the codes that Windows doesn't know. Filled at start-up, then only read.
inline std::map<HRESULT, std::wstring> CustomErrorTexts;

/// Throws the `_com_error` for a Win32 error code: HRESULT_FROM_WIN32, so a code of 0 or below stays as it is, and
/// 0 throws the HRESULT of a success.
[[noreturn]] void ThrowWin32Error(DWORD code);

/// Throws like `ThrowWin32Error` unless `status`, the result of a registry function, is ERROR_SUCCESS.
void ThrowIfWin32Failed(LSTATUS status);

/// What log and screen say of an error: the text of `CustomErrorTexts`, else the description that came with the error,
/// else Windows' message, then the HRESULT in lower-case hexadecimal: "Access denied. (0x80070005)".
/// Fails only without memory. Any thread.
std::wstring ComErrorText(const _com_error& error);
