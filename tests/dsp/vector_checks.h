#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "dsp/vector_targets.h"

namespace vector_checks {

/// Longest block of the sweeps: past four of the widest vectors and a tail.
constexpr int longest_count = 67;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

/// Runs the body once on every target of this machine, then puts the former one back.
template <class Body>
void on_every_target(Body body) {
    const int former = active_vector_target();
    for (int target = 0; target < vector_target_count(); ++target) {
        select_vector_target(target);
        body(vector_target_name(target));
    }
    select_vector_target(former);
}

/// Equal to the bit; any NaN equals any other.
template <class Element>
bool same_bits(Element a, Element b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
}

/// Index of the first element that differs, or -1.
template <class Element>
int first_difference(const Element* a, const Element* b, int n) {
    for (int i = 0; i < n; ++i)
        if (!same_bits(a[i], b[i]))
            return i;
    return -1;
}

/// Source elements behind `offset` others, in a heap block that ends with them, so that AddressSanitizer sees a
/// read past the end.
template <class Element>
std::vector<Element> behind(int offset, const std::vector<Element>& content) {
    std::vector<Element> block(content.size() + static_cast<std::size_t>(offset));
    std::copy(content.begin(), content.end(), block.begin() + offset);
    return block;
}

/// `n` destination elements between two walls that must stand.
template <class Element>
class guarded_block {
public:
    guarded_block(const Element* content, int n, int offset)
        : block_(static_cast<std::size_t>(n + 2 * wall + offset), brick()),
          start_(block_.size() - static_cast<std::size_t>(n + wall)),
          end_(block_.size() - wall) {
        std::copy_n(content, n, data());
    }
    Element* data() { return block_.data() + start_; }
    bool walls_stand() const {
        for (std::size_t i = 0; i < block_.size(); ++i)
            if ((i < start_ || i >= end_) && !same_bits(block_[i], brick()))
                return false;
        return true;
    }

private:
    static constexpr int wall = 32;
    static constexpr Element brick() { return static_cast<Element>(-12345); }

    std::vector<Element> block_;
    std::size_t start_;
    std::size_t end_;
};

/// The values on which arithmetic turns: special ones, and whole numbers that floats only just tell apart.
inline const std::vector<float>& turning_points() {
    using limits = std::numeric_limits<float>;
    constexpr float largest = limits::max();
    constexpr float normal = limits::min();
    constexpr float tiny = limits::denorm_min();
    static const std::vector<float> values = {
        0.0F,        -0.0F,        1.0F,       -1.0F,       0.5F,      -0.5F,       2.0F,
        -2.0F,       3.0F,         -3.0F,      2.5F,        -2.5F,     16777215.0F, -16777215.0F,
        16777216.0F, -16777216.0F, 8388607.5F, -8388607.5F, largest,   -largest,    normal,
        -normal,     tiny,         -tiny,      infinity,    -infinity, not_a_number};
    return values;
}

/// Values of all sizes and signs; every fourth or so is a turning point.
inline std::vector<float> test_values(int n, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> choice(0, 4 * turning_points().size());
    std::uniform_real_distribution<float> mantissa(-2.0F, 2.0F);
    std::uniform_int_distribution<int> exponent(-20, 20);
    std::vector<float> values(static_cast<std::size_t>(n));
    for (float& value : values) {
        const std::size_t chosen = choice(random);
        value = chosen < turning_points().size() ? turning_points()[chosen]
                                                 : std::ldexp(mantissa(random), exponent(random));
    }
    return values;
}

} // namespace vector_checks
