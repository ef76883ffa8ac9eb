#include "lab/onenote/Behaviour.h"

#include <array>
#include <cstdlib>

namespace {

std::wstring SettingsFile;

std::wstring Text(const wchar_t* name, const wchar_t* otherwise = L"") {
    std::array<wchar_t, 256> text{};
    GetPrivateProfileStringW(L"OneNote", name, otherwise, text.data(), static_cast<DWORD>(text.size()),
                             SettingsFile.c_str());
    return text.data();
}

unsigned Number(const wchar_t* name, unsigned otherwise) {
    return GetPrivateProfileIntW(L"OneNote", name, static_cast<int>(otherwise), SettingsFile.c_str());
}

} // namespace

void Behaviour::SetSettingsFile(const std::wstring& path) {
    SettingsFile = path;
}

unsigned Behaviour::WindowsAtStart() {
    return Number(L"Windows", 1);
}

bool Behaviour::HasFrames() {
    return Number(L"Framed", 0) != 0;
}

Behaviour::Closing Behaviour::HowToClose() {
    const std::wstring closing = Text(L"Closing");
    if (closing == L"ask")
        return Closing::Ask;
    return closing == L"ignore" ? Closing::Ignore : Closing::Obey;
}

Outcome Behaviour::MakeTrouble(const std::wstring& member, unsigned occurrence) {
    if (Text(L"Call") != member || Number(L"Occurrence", 1) != occurrence)
        return {};
    const std::wstring trouble = Text(L"Trouble");
    if (trouble == L"wait")
        Sleep(Number(L"Milliseconds", 0));
    if (trouble == L"end")
        TerminateProcess(GetCurrentProcess(), 1);
    if (trouble == L"null")
        return {Outcome::Kind::Null, S_OK, L""};
    if (trouble != L"fail")
        return {};
    const unsigned long result = std::wcstoul(Text(L"Result", L"0x80004005").c_str(), nullptr, 16);
    return {Outcome::Kind::Failure, static_cast<HRESULT>(result), Text(L"Description")};
}
