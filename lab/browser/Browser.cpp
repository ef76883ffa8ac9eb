// Stands in for the user's web browser: adds a line with its parameters, as they are, to browser.log in the temporary
// folder, in UTF-8. The exit code is 0.

#include "core/TempPath.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <string>

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* commandLine, int /*show*/) {
    const std::u8string line = std::filesystem::path(std::wstring(commandLine) + L'\n').u8string();
    std::ofstream file(std::filesystem::path(TempPath(L"browser.log")), std::ios::app | std::ios::binary);
    file.write(reinterpret_cast<const char*>(line.data()), static_cast<std::streamsize>(line.size()));
    return 0;
}
