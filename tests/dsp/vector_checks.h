#pragma once

#include "kit/audio.h"

#include <cstring>
#include <random>

namespace vector_checks {

/// Longest block of the sweeps over all counts: past four of the widest vectors and a tail.
constexpr int longest_count = 67;

/// A block of two turns of eight of the widest vectors, and of whatever a shorter rest is taken in.
constexpr int count_of_two_turns = 2 * 128 + 127;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

using test_kit::on_every_target;

/// Source elements behind `offset` others, in a heap block that ends with them, so that AddressSanitizer sees a
/// read past the end.
template <class Element>
std::vector<Element> behind(int offset, const std::vector<Element>& content) {
    std::vector<Element> block(content.size() + static_cast<std::size_t>(offset));
    std::copy(content.begin(), content.end(), block.begin() + offset);
    return block;
}

constexpr int wall = 32;

/// Destination elements between two walls that must stand; they start at `wall` + `offset`.
template <class Element>
std::vector<Element> walled(int offset, const std::vector<Element>& content) {
    std::vector<Element> block(static_cast<std::size_t>(wall + offset), static_cast<Element>(-12345));
    block.insert(block.end(), content.begin(), content.end());
    block.insert(block.end(), wall, static_cast<Element>(-12345));
    return block;
}

/// Whether two blocks of one size are equal to the bit, walls and all; any NaN equals any other.
template <class Element>
bool same_blocks(const std::vector<Element>& a, const std::vector<Element>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), [](Element x, Element y) {
        return std::memcmp(&x, &y, sizeof x) == 0 || (x != x && y != y);
    });
}

/// The values on which arithmetic turns: special ones, and whole numbers that floats only just tell apart.
inline std::vector<float> turning_points() {
    using limits = std::numeric_limits<float>;
    std::vector<float> values = {not_a_number};
    for (const float size : {0.0F, 0.5F, 1.0F, 2.0F, 2.5F, 3.0F, 8388607.5F, 16777215.0F, 16777216.0F,
                             limits::max(), limits::min(), limits::denorm_min(), infinity})
        values.insert(values.end(), {size, -size});
    return values;
}

/// Values of all sizes and signs; every fourth or so is a turning point.
inline std::vector<float> test_values(int n, unsigned seed) {
    static const std::vector<float> special = turning_points();
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> choice(0, 4 * special.size());
    std::uniform_real_distribution<float> mantissa(-2.0F, 2.0F);
    std::uniform_int_distribution<int> exponent(-20, 20);
    std::vector<float> values(static_cast<std::size_t>(n));
    for (float& value : values) {
        const std::size_t chosen = choice(random);
        value = chosen < special.size() ? special[chosen] : std::ldexp(mantissa(random), exponent(random));
    }
    return values;
}

} // namespace vector_checks
