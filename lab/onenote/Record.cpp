#include "lab/onenote/Record.h"

#include <fstream>

namespace {

std::filesystem::path File;

} // namespace

void SetRecordFile(const std::filesystem::path& path) {
    File = path;
}

void Record(const std::wstring& line) {
    const std::u8string text = std::filesystem::path(line + L'\n').u8string();
    std::ofstream file(File, std::ios::app);
    file.write(reinterpret_cast<const char*>(text.data()), static_cast<std::streamsize>(text.size()));
}
