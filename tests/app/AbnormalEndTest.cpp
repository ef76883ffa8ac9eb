#include "app/AbnormalEnd.h"

#include "tests/support/ImportPatch.h"

#include <csignal>
#include <exception>
#include <gtest/gtest.h>
#include <vector>

namespace {

/// Puts back what it sets for the whole process. How the process then ends is seen in program/AbnormalEndTest.cpp.
class AbnormalEnd : public testing::Test {
protected:
    ~AbnormalEnd() override {
        std::set_terminate(terminate_);
        std::signal(SIGABRT, SIG_DFL);
        SetUnhandledExceptionFilter(nullptr);
    }

private:
    std::terminate_handler terminate_ = std::get_terminate();
};

} // namespace

TEST_F(AbnormalEnd, ComesForACorruptHeapToo) {
    static int calls;
    calls = 0;
    const ImportPatch<decltype(HeapSetInformation)> set(
        "HeapSetInformation", [](HANDLE heap, HEAP_INFORMATION_CLASS information, PVOID value, SIZE_T size) -> BOOL {
            ++calls;
            EXPECT_EQ(heap, nullptr);
            EXPECT_EQ(information, HeapEnableTerminationOnCorruption);
            EXPECT_EQ(value, nullptr);
            EXPECT_EQ(size, 0U);
            return FALSE;
        });
    EndProcessOnUncaughtErrors();
    EXPECT_EQ(calls, 1);
}

TEST_F(AbnormalEnd, IsNotShownByErrorReporting) {
    static std::vector<DWORD> flags;
    flags.clear();
    const ImportPatch<HRESULT WINAPI(DWORD)> set("WerSetFlags", [](DWORD value) -> HRESULT {
        flags.push_back(value);
        return E_FAIL;
    });
    EndProcessOnUncaughtErrors();
    EXPECT_EQ(flags, std::vector<DWORD>{0x20}); // WER_FAULT_REPORTING_NO_UI
}
