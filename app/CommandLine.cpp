#include "app/CommandLine.h"

#include "core/ComError.h"
#include "core/Launch.h"

#include <windows.h>

#include <shellapi.h>

#include <string_view>

void ReadCommandLine(const wchar_t* commandLine) {
    int count = 0;
    // Never freed: a few bytes, once in a process.
    wchar_t** const arguments = CommandLineToArgvW(commandLine, &count);
    if (arguments == nullptr)
        ThrowWin32Error(GetLastError());
    for (int index = 0; index < count - 1; ++index) {
        const std::wstring_view argument = arguments[index];
        if (argument == L"/config")
            ConfigPath = arguments[index + 1];
        else if (argument == L"/delay")
            DelayOption = true;
    }
}
