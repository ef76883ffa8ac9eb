#pragma once

#include "support/Findings.h"

#include <filesystem>
#include <string>
#include <vector>

/// Reads a log from its file, a megabyte at a time, also while the installer writes it. A file that can't be read is a
/// finding too: `Verdict::Unreadable`, with the reason as its message.
Findings ReadLogFile(const std::filesystem::path& file);

/// The logs that an argument names: itself, every "*.log" in a folder and in the folders below it, or the files that a
/// wildcard in its last part fits, in the order of their names. None when there are none. Links to folders are not
/// followed. A folder that can't be listed stands among the logs itself, as one that can't be read.
std::vector<std::filesystem::path> FindLogs(const std::wstring& argument);
