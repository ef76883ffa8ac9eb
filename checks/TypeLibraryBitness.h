#pragma once

#include <string>
#include <vector>

/// The files that are registered for a type library, for 32-bit and for 64-bit programs, in the native view of the
/// registry and in the 32-bit one. As the registry has them: mostly with a NUL at the end. Empty when missing.
struct TypeLibFileList {
    std::wstring win32Native;
    std::wstring win64Native;
    std::wstring win32Wow64;
    std::wstring win64Wow64;
};

/// True when the library is registered for 32-bit programs only: its native Win32 path contains "x86" or "X86", that of
/// the 32-bit view does too or is empty, and neither view has a Win64 path. The files themselves are not looked at. Any
/// thread.
bool IsFor32BitOnly(const TypeLibFileList& files);

/// Writes to the log, for each of the versions ("1.1") in order: how that version of the type library `libId` (with its
/// braces) is registered, in a block titled with `name`, and whether the files exist that are registered for it. A file
/// exists when it can be opened for reading; a path of less than five characters, its NUL included, is not looked for.
///
/// For the version that equals `wanted` it adds whether the library `IsFor32BitOnly`, and returns that. A path
/// that is nothing but its NUL is not empty; one that can't be read is. False when no version equals `wanted`.
///
/// Changes nothing and fails only without memory. Main thread, before a second one exists.
bool CheckTypeLibraryBitness(const std::wstring& name, const std::wstring& libId,
                             const std::vector<std::wstring>& versions, const std::wstring& wanted);
