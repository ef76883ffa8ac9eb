#include "proof/hostile/Inputs.h"

#include <cstdlib>
#include <string>

std::uint64_t Seed() {
    const char* const seed = std::getenv("VELLUMKIT_SEED");
    return seed != nullptr ? std::stoull(seed) : 20260101;
}
