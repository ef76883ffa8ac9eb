#include "app/DpiAwareness.h"
#include "core/Log.h"
#include "tests/support/FailureRecord.h"
#include "tests/support/LabBrowser.h"
#include "tests/support/LabOffice.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/TestFolder.h"
#include "tests/support/Watchdog.h"

#include <gtest/gtest.h>

/// Every test program has a temporary folder of its own, made before anything asks for it.
int main(int argc, char** argv) {
    SetDpiAwareness(); // pixels are those of the screen, as in the front-end
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const TestFolder folder;
    SetEnvironmentVariableW(L"TMP", folder.Path().c_str());
    Watchdog::Start();
    RecordFailures();
    LabOneNote::Unregister();
    LabOffice::Remove();
    LabBrowser::Unregister();
    KeptKey::Restore(HKEY_CURRENT_USER, InternetSettings);
    const int result = RUN_ALL_TESTS();
    CloseLog(); // so that the folder can go
    return result;
}
