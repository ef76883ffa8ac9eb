// Stands in for the user's web browser: adds a line with its parameters, as they are, to browser.log in the temporary
// folder. The exit code is 0.

#include "core/TempPath.h"

#include <windows.h>

#include <filesystem>
#include <fstream>

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* commandLine, int /*show*/) {
    std::wofstream(std::filesystem::path(TempPath(L"browser.log")), std::ios::app) << commandLine << L'\n';
    return 0;
}
