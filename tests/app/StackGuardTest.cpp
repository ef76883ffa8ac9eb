#include "app/StackGuard.h"

#include <gtest/gtest.h>

#if defined(__MINGW32__)

TEST(StackGuard, IsChosen) {
    EXPECT_NE(StackGuard, UnchosenStackGuard);
}

TEST(StackGuard, HoldsZerosThatNoTextCanCopy) {
    EXPECT_EQ(StackGuard >> 48, 0U);
}

#endif
