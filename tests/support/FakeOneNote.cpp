#include "tests/support/FakeOneNote.h"

#include "install/OneNoteAutomation.h"

FakeOneNote::~FakeOneNote() {
    if (registration_ != 0)
        CoRevokeClassObject(registration_);
}

void FakeOneNote::Register() {
    CoRegisterClassObject(CLSID_OneNoteApplication, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_);
}

void FakeOneNote::Fail(const Call& call, HRESULT result, const wchar_t* description) {
    trouble_ = {call, {Outcome::Kind::Failure, result, description}};
}

void FakeOneNote::GiveNull(const Call& call) {
    trouble_ = {call, {Outcome::Kind::Null, S_OK, L""}};
}

Outcome FakeOneNote::OnCall(const std::wstring& member, const std::wstring& arguments) {
    if (member == L"NavigateTo")
        Navigations.push_back(member + arguments);
    if (member != trouble_.call.member)
        return {};
    --trouble_.call.occurrence;
    return trouble_.call.occurrence == 0 ? trouble_.outcome : Outcome{};
}

void FakeOneNote::Navigate(bool /*inNewWindow*/) {
    if (OpenedByNavigation != nullptr)
        Windows.push_back(OpenedByNavigation);
}
