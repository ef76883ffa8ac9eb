#pragma once

#include <string>
#include <string_view>

/// The user's temporary folder (`GetTempPathW`: it ends in a backslash) with `suffix` appended; no separator is added.
/// The folder is asked for until Windows names it, and then kept. Until then it counts as empty, and the result is
/// `suffix` alone, a path in the current directory.
/// The kept copy has no lock: the first entry of the log asks for it, before a second thread exists.
std::wstring TempPath(std::wstring_view suffix);
