#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

/// Numbers that only the seed and the input's index decide, with every compiler and library (splitmix64), so that one
/// input can be made again without those before it.
class Random {
public:
    Random(std::uint64_t seed, std::uint64_t index) : state_(seed * 0x9E3779B97F4A7C15 + index) {
        state_ = Next(); // or neighbours would share their numbers
    }

    std::uint64_t Next() {
        state_ += 0x9E3779B97F4A7C15;
        std::uint64_t number = state_;
        number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9;
        number = (number ^ number >> 27) * 0x94D049BB133111EB;
        return number ^ number >> 31;
    }

    /// From 0 to `bound` - 1.
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(Next() % bound); }

    /// Once in `times`.
    bool OneIn(std::size_t times) { return Below(times) == 0; }

    template <typename Choices>
    const auto& Pick(const Choices& choices) {
        return *(std::begin(choices) + static_cast<std::ptrdiff_t>(Below(std::size(choices))));
    }

private:
    std::uint64_t state_;
};
