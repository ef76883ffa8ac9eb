// The stand-in's objects in the client's own process, because Wine does not carry error information across processes.
// The settings are in the client's temporary folder. The windows are those of a stand-in that runs beside it, and what
// NavigateTo opens here.

#include "core/TempPath.h"
#include "lab/onenote/ConfiguredOneNote.h"

#include <OneNoteLibrary.h>

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    *object = nullptr;
    if (clsid != __uuidof(Application) && clsid != __uuidof(Application2))
        return CLASS_E_CLASSNOTAVAILABLE;
    static ConfiguredOneNote oneNote(TempPath(L"lab.ini"));
    return oneNote.QueryInterface(iid, object);
}
