#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

/// Numbers that only the seed and the input's index decide, with every compiler and library (splitmix64), so that one
/// input can be made again without those before it.
class Random {
public:
    // Mixed, or the inputs beside each other would share their numbers.
    Random(std::uint64_t seed, std::uint64_t index) : state_(Mix((seed + 1) * Step + index)) {}

    std::uint64_t Next() { return Mix(state_ += Step); }

    /// From 0 to `bound` - 1.
    std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(Next() % bound); }

    /// Once in `times`.
    bool OneIn(std::size_t times) { return Below(times) == 0; }

    template <typename Choices>
    const auto& Pick(const Choices& choices) {
        return *(std::begin(choices) + static_cast<std::ptrdiff_t>(Below(std::size(choices))));
    }

private:
    static constexpr std::uint64_t Step = 0x9E3779B97F4A7C15;

    static std::uint64_t Mix(std::uint64_t number) {
        number = (number ^ number >> 30) * 0xBF58476D1CE4E5B9;
        number = (number ^ number >> 27) * 0x94D049BB133111EB;
        return number ^ number >> 31;
    }

    std::uint64_t state_;
};
