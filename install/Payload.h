#pragma once

#include "core/Unique.h"

#include <span>
#include <string>

/// Writes the elevated installer, resource "FILE" 200 of `InstanceHandle`, to "Vellumkit\Vellumkit Installer.exe" in
/// the temporary folder and starts it through the shell, which raises the elevation prompt. Its parameters are the
/// temporary folder, a blank and `ConfigPath`. The file is overwritten by every call and never deleted. Nobody can
/// change it while the shell starts it, unless somebody had it open for that before. Otherwise what was changed before
/// that is not started, nor what somebody keeps from being read. Returns the handle of its process; none when the shell
/// started no process. Throws a `_com_error`: `ErrorReadResource` (also for a size that Windows can't tell),
/// `ErrorTempFile` or the HRESULT of the Windows call that failed (0x800704C7 for a refused elevation prompt,
/// 0x80070020 for a file that somebody else changed or locks). The thread that runs the pass.
UniqueHandle ExtractAndRunInstaller();

/// Creates the folder unless it exists; its parent must. Throws a `_com_error` with the system's error code, or
/// `ErrorTempFile` when there is none. Any thread.
void EnsureFolder(const std::wstring& path);

/// Replaces the file's content. False when the file can't be opened for writing, with the last-error value telling why.
/// A write that fails later changes nothing but `*whole`, unless that is null: whether all bytes were written. Any
/// thread.
bool WriteBytesToFile(const std::wstring& path, std::span<const char> bytes, bool* whole = nullptr);
