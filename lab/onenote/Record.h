#pragma once

#include <filesystem>
#include <string>

/// Comes before the first line.
void SetRecordFile(const std::filesystem::path& path);

/// Appends a line to it in UTF-8; when this returns, everybody can read it. Nobody empties the file.
void Record(const std::wstring& line);
