// Stands in for the elevated installer: logs how it was called, takes the time and returns the exit code that the
// configuration file asks for:
//
//     [ElevatedInstaller]
//     ExitCode=-100
//     Milliseconds=2000
//
// Called without one, as in an installation with a window, it reads lab.ini in the temporary folder. Without such a
// file it returns 0 at once. A program file that is not as the linker made it returns ERROR_CRC, whatever it is asked
// for.

#include "core/Log.h"
#include "core/TempPath.h"

#include <windows.h>

#include <imagehlp.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

/// The parameters are the temporary folder, which is not quoted, a blank and perhaps the configuration file's path.
std::wstring ConfigurationFile(const std::wstring& parameters) {
    const std::wstring folder = TempPath(L"") + L' ';
    if (!parameters.starts_with(folder))
        return {};
    const std::wstring file = parameters.substr(folder.size());
    return file.empty() ? TempPath(L"lab.ini") : file;
}

/// A decimal number, negative or up to 32 bits wide; 0 when it is missing. `file` must be a whole path.
DWORD ReadNumber(const std::wstring& file, const wchar_t* name) {
    std::array<wchar_t, 32> text{};
    GetPrivateProfileStringW(L"ElevatedInstaller", name, L"0", text.data(), static_cast<DWORD>(text.size()),
                             file.c_str());
    return static_cast<DWORD>(std::wcstoll(text.data(), nullptr, 10));
}

/// The linker writes the file's checksum into its header.
bool IsDamaged() {
    std::array<wchar_t, 1024> program{};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    DWORD written = 0;
    DWORD now = 0;
    return MapFileAndCheckSumW(program.data(), &written, &now) != CHECKSUM_SUCCESS || written != now;
}

} // namespace

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* commandLine, int /*show*/) {
    Log(true) << L"Command line: " << GetCommandLineW();
    Log(true) << L"Error mode: " << GetErrorMode();
    std::error_code missing;
    const std::wstring file = std::filesystem::absolute(ConfigurationFile(commandLine), missing);
    Sleep(ReadNumber(file, L"Milliseconds"));
    const DWORD exitCode = IsDamaged() ? DWORD{ERROR_CRC} : ReadNumber(file, L"ExitCode");
    Log(true) << L"Exit code: " << exitCode;
    return static_cast<int>(exitCode);
}
