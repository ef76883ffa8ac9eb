// OneNote's automation as an in-process server: its one window is that of a target program of the lab. So a front-end
// meets a OneNote that can be asked to close.

#include "tests/support/FakeOneNote.h"

namespace {

FakeOneNote& OneNote() {
    static FakeOneNote oneNote;
    oneNote.Windows = {FindWindowW(L"LabTargetProgram", nullptr)};
    return oneNote;
}

} // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    *object = nullptr;
    if (clsid != CLSID_OneNoteApplication)
        return CLASS_E_CLASSNOTAVAILABLE;
    return OneNote().Factory()->QueryInterface(iid, object);
}
