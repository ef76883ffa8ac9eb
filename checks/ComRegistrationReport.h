#pragma once

#include <string>
#include <vector>

// Blocks of the log that show how COM finds what OneNote and its add-ins need: the registration in HKEY_CLASSES_ROOT,
// in the native view and in the 32-bit one. Nothing is changed, and what can't be read is "Not found". Identifiers are
// texts with their braces, as they stand in the registry. Fails only without memory. Main thread, before a second one
// exists.

/// A ProgID and its forms with a version behind a dot ("OneNote.Application.15"), in that order. The native view only.
void ReportProgId(const std::wstring& progId, const std::vector<std::wstring>& versions);

/// A class; `name` stands in the title only.
void ReportClsid(const std::wstring& name, const std::wstring& clsid);

/// An interface; `name` stands in the title only. Returns the version of the type library that it names ("1.1"),
/// natively or else in the 32-bit view, up to the first NUL; empty when neither view has one. A number counts as an
/// empty version; what is neither string nor number counts as missing.
std::wstring ReportInterface(const std::wstring& name, const std::wstring& iid);
