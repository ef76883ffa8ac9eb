#include "proof/hostile/Inputs.h"

#include <windows.h>

#include <array>
#include <string>

std::uint64_t Seed() {
    std::array<wchar_t, 32> setting{};
    const DWORD length = GetEnvironmentVariableW(L"VELLUMKIT_SEED", setting.data(), static_cast<DWORD>(setting.size()));
    return length != 0 ? std::stoull(setting.data()) : 20260101;
}
