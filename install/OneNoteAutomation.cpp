#include "install/OneNoteAutomation.h"

HRESULT CreateOneNoteApplication(OneNoteApplicationPtr& application) {
    return application.CreateInstance(CLSID_OneNoteApplication, nullptr, CLSCTX_ALL);
}
