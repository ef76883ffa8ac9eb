#pragma once

#include <string>
#include <string_view>

/// The user's temporary folder (`GetTempPathW`: it ends in a backslash) with `suffix` appended; no separator is added.
/// The folder is asked for once and kept. When Windows can't name it, it counts as empty, and the result is `suffix`
/// alone, a path in the current directory.
/// The kept copy has no lock: the log asks for it first, before any second thread exists.
std::wstring TempPath(std::wstring_view suffix);
