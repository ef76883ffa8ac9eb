#include "lab/onenote/Behaviour.h"

#include "lab/onenote/Record.h"

#include <comdef.h>

#include <array>
#include <cstdlib>
#include <map>

namespace {

_COM_SMARTPTR_TYPEDEF(ICreateErrorInfo, __uuidof(ICreateErrorInfo));
_COM_SMARTPTR_TYPEDEF(IErrorInfo, __uuidof(IErrorInfo));

std::wstring SettingsFile;
std::map<std::wstring, unsigned> Calls;

std::wstring Text(const wchar_t* name, const wchar_t* otherwise = L"") {
    std::array<wchar_t, 256> text{};
    GetPrivateProfileStringW(L"OneNote", name, otherwise, text.data(), static_cast<DWORD>(text.size()),
                             SettingsFile.c_str());
    return text.data();
}

unsigned Number(const wchar_t* name, unsigned otherwise) {
    return GetPrivateProfileIntW(L"OneNote", name, static_cast<int>(otherwise), SettingsFile.c_str());
}

void SetErrorDescription(std::wstring description) {
    if (description.empty())
        return;
    ICreateErrorInfoPtr error;
    CreateErrorInfo(&error);
    error->SetDescription(description.data()); // copied, not changed
    SetErrorInfo(0, IErrorInfoPtr(error));
}

HRESULT MakeTrouble() {
    const std::wstring trouble = Text(L"Trouble");
    if (trouble == L"wait")
        Sleep(Number(L"Milliseconds", 0));
    if (trouble == L"end")
        TerminateProcess(GetCurrentProcess(), 1);
    if (trouble == L"null")
        return S_FALSE;
    if (trouble != L"fail")
        return S_OK;
    SetErrorDescription(Text(L"Description"));
    return static_cast<HRESULT>(std::wcstoul(Text(L"Result", L"0x80004005").c_str(), nullptr, 16));
}

} // namespace

void Behaviour::ReadFrom(const std::wstring& settingsFile) {
    SettingsFile = settingsFile;
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

HRESULT Behaviour::OnCall(const std::wstring& member, const std::wstring& arguments) {
    Record(member + arguments);
    const unsigned occurrence = ++Calls[member];
    const bool meant = Text(L"Call") == member && occurrence == Number(L"Occurrence", 1);
    return meant ? MakeTrouble() : S_OK;
}
