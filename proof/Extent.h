#pragma once

#include <cstdlib>
#include <string_view>

/// How often a proof repeats what it does.
struct Extent {
    /// In ./test.sh.
    int sample;
    /// In ./prove.sh, which sets VELLUMKIT_PROOF=whole.
    int whole;

    int Count() const {
        const char* const proof = std::getenv("VELLUMKIT_PROOF");
        return proof != nullptr && std::string_view(proof) == "whole" ? whole : sample;
    }
};
