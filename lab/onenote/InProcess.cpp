// The stand-in's objects in the client's own process, for what does not cross processes everywhere: error information.
// The windows are those of a stand-in that runs beside it; the settings are in the client's temporary folder.

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
