#include "core/Unique.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

struct NumberTraits {
    using Handle = int;
    static constexpr Handle None = 0;
    static bool IsOpen(Handle handle) { return handle > 0; }
    static void Close(Handle handle) {
        Closed.push_back(handle);
        SetLastError(ERROR_INVALID_HANDLE);
    }
    static inline std::vector<int> Closed;
};
using UniqueNumber = Unique<NumberTraits>;

class UniqueHandles : public testing::Test {
protected:
    void SetUp() override { NumberTraits::Closed.clear(); }
    static const std::vector<int>& Closed() { return NumberTraits::Closed; }
};

} // namespace

TEST_F(UniqueHandles, AreClosedOnce) {
    {
        UniqueNumber first(1);
        const UniqueNumber second(std::move(first));
        EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): that it is empty is the point
    }
    EXPECT_EQ(Closed(), std::vector{1});
}

TEST_F(UniqueHandles, AreNotClosedWhenTheyAreNone) {
    {
        const UniqueNumber none;
        const UniqueNumber invalid(-1);
    }
    EXPECT_TRUE(Closed().empty());
}

TEST_F(UniqueHandles, AreClosedBeforeAnotherIsTaken) {
    UniqueNumber number(1);
    number.Reset(2);
    number = UniqueNumber(3);
    *number.Receive() = 4;
    EXPECT_EQ(Closed(), (std::vector{1, 2, 3}));
    EXPECT_EQ(number.Get(), 4);
}

TEST_F(UniqueHandles, AreKeptOpenWhenGivenUp) {
    EXPECT_EQ(UniqueNumber(1).Release(), 1);
    EXPECT_TRUE(Closed().empty());
}

TEST_F(UniqueHandles, LeaveTheLastErrorAsItWas) {
    SetLastError(ERROR_FILE_NOT_FOUND);
    { const UniqueNumber number(1); }
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(UniqueKernelHandle, TakesBothInvalidValuesForNone) {
    EXPECT_FALSE(UniqueHandle(nullptr));
    EXPECT_FALSE(UniqueHandle(INVALID_HANDLE_VALUE));
}
