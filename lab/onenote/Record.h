#pragma once

#include <filesystem>
#include <string>

/// What the stand-in was asked is recorded in the file onenote.log beside that one from now on.
void RecordBeside(const std::filesystem::path& settingsFile);

/// Appends a line in UTF-8; when this returns, everybody can read it. Nobody empties the file.
void Record(const std::wstring& line);
