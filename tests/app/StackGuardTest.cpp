#include "app/StackGuard.h"

#include <gtest/gtest.h>

TEST(StackGuard, IsChosenBeforeAnythingUsesIt) {
    EXPECT_NE(StackGuard, UnchosenStackGuard);
    EXPECT_NE(StackGuard, 0U);
}

TEST(StackGuard, HoldsZerosThatNoTextCanCopy) {
    EXPECT_EQ(StackGuard >> 48, 0U);
}
