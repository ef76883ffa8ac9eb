#include "lab/onenote/ConfiguredOneNote.h"

#include "lab/onenote/Behaviour.h"
#include "lab/onenote/OpenWindows.h"
#include "lab/onenote/Record.h"

ConfiguredOneNote::ConfiguredOneNote(const std::filesystem::path& settings) {
    Behaviour::SetSettingsFile(settings);
    SetRecordFile(settings.parent_path() / "onenote.log");
}

Outcome ConfiguredOneNote::OnCall(const std::wstring& member, const std::wstring& arguments) {
    Record(member + arguments);
    return Behaviour::MakeTrouble(member, ++calls_[member]);
}

void ConfiguredOneNote::OnLastReferenceReleased() {
    Record(L"No references");
}

std::vector<HWND> ConfiguredOneNote::WindowsByIndex() const {
    return WindowsInOrder();
}

HWND ConfiguredOneNote::CurrentWindow() const {
    return ::CurrentWindow();
}

void ConfiguredOneNote::Navigate(bool inNewWindow) {
    if (inNewWindow || WindowsInOrder().empty())
        OpenWindow();
}
