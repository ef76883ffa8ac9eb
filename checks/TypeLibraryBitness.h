#pragma once

#include <string>
#include <vector>

/// Writes to the log, for each of the versions ("1.1") in order: how that version of the type library `libId` (with its
/// braces) is registered, in a block titled with `name`, and whether the files exist that are registered for it. A file
/// exists when it can be opened for reading; a path of less than five characters, its NUL included, is not looked for.
///
/// For the version that equals `wanted` it adds whether the library is registered for 32-bit programs only, and returns
/// that: true when its native Win32 path contains "x86" or "X86", that of the 32-bit view does too or is missing, and
/// neither view has a Win64 path. An empty path counts as one when it is stored with its NUL. The files are not looked
/// at for that, and whatever can't be read is missing. False when no version equals `wanted`.
///
/// Changes nothing and fails only without memory. Main thread, before a second one exists.
bool CheckTypeLibraryBitness(const std::wstring& name, const std::wstring& libId,
                             const std::vector<std::wstring>& versions, const std::wstring& wanted);
