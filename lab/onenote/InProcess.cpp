// The stand-in's objects in the client's own process, because Wine does not carry error information across processes.
// The settings are in the client's temporary folder. The windows are those of a stand-in that runs beside it, and what
// NavigateTo opens here.

#include "core/TempPath.h"
#include "lab/onenote/Automation.h"
#include "lab/onenote/Behaviour.h"
#include "lab/onenote/Record.h"

#include <OneNoteLibrary.h>

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    *object = nullptr;
    if (clsid != __uuidof(Application) && clsid != __uuidof(Application2))
        return CLASS_E_CLASSNOTAVAILABLE;
    Behaviour::ReadFrom(TempPath(L"lab.ini"));
    RecordBeside(TempPath(L"lab.ini"));
    return ClassObject()->QueryInterface(iid, object);
}
