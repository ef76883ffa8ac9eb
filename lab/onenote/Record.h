#pragma once

#include <filesystem>
#include <string>

/// From now on, what the stand-in is asked is recorded in onenote.log, beside the settings file.
void RecordBeside(const std::filesystem::path& settingsFile);

/// Appends a line in UTF-8; when this returns, everybody can read it. Nobody empties the file.
void Record(const std::wstring& line);
