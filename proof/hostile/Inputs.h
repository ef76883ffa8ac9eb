#pragma once

#include "proof/Extent.h"
#include "proof/hostile/Random.h"
#include "tests/support/Watchdog.h"

#include <gtest/gtest.h>
#include <iostream>

/// The seed of this run: VELLUMKIT_SEED, or the one of ./test.sh.
std::uint64_t Seed();

/// Calls `body` with the random numbers of each input and prints how many there were. Ends at the first input that
/// fails and names it; an input that hangs is ended with the program after a minute.
template <typename Body>
void ForEachInput(Extent extent, Body body) {
    const int count = extent.Count();
    for (int index = 0; index < count; ++index) {
        if (index % 100 == 0)
            Watchdog::Allow(60);
        Random random(Seed(), static_cast<std::uint64_t>(index));
        body(random);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "Seed " << Seed() << ", input " << index;
            return;
        }
    }
    std::cout << "[  INPUTS  ] " << count << ", seed " << Seed() << std::endl;
}
