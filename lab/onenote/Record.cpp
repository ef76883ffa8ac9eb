#include "lab/onenote/Record.h"

#include <fstream>

namespace {

std::filesystem::path File;

} // namespace

void RecordBeside(const std::filesystem::path& settingsFile) {
    File = settingsFile.parent_path() / "onenote.log";
}

void Record(const std::wstring& line) {
    const std::u8string text = std::filesystem::path(line + L'\n').u8string();
    std::ofstream file(File, std::ios::app);
    file.write(reinterpret_cast<const char*>(text.data()), static_cast<std::streamsize>(text.size()));
}
