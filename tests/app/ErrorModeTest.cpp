#include "app/ErrorMode.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <thread>

TEST(ErrorMode, IsThatOfTheThreadAndNotThatOfTheProcess) {
    const UINT process = GetErrorMode();
    const DWORD another = GetThreadErrorMode();
    DWORD suppressed = 0;
    std::thread([&] {
        SuppressCriticalErrorBoxes();
        suppressed = GetThreadErrorMode();
    }).join();
    EXPECT_EQ(suppressed, static_cast<DWORD>(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX));
    EXPECT_EQ(GetErrorMode(), process);
    EXPECT_EQ(GetThreadErrorMode(), another);
}
