#pragma once

#include <windows.h>

#include <array>
#include <string_view>

/// How often a proof repeats what it does.
struct Extent {
    /// In ./test.sh.
    int sample;
    /// In ./prove.sh, which sets VELLUMKIT_PROOF=whole.
    int whole;

    int Count() const {
        std::array<wchar_t, 32> setting{};
        GetEnvironmentVariableW(L"VELLUMKIT_PROOF", setting.data(), static_cast<DWORD>(setting.size()));
        return std::wstring_view(setting.data()) == L"whole" ? whole : sample;
    }
};
