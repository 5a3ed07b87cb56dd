#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "dsp/vector_targets.h"

namespace vector_checks {

/// Longest block of the sweeps: past four of the widest vectors and a tail.
constexpr int longest_count = 67;

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

/// `n` source elements, `offset` elements behind the start of a heap block that ends with them, so that
/// AddressSanitizer sees a read past the end.
template <class Element>
class source_block {
public:
    source_block(const Element* content, int n, int offset)
        : block_(static_cast<std::size_t>(n + offset)), offset_(offset) {
        if (n > 0)
            std::memcpy(data(), content, static_cast<std::size_t>(n) * sizeof(Element));
    }
    Element* data() { return block_.data() + offset_; }

private:
    std::vector<Element> block_;
    int offset_;
};

/// `n` destination elements between two walls that must stand.
template <class Element>
class guarded_block {
public:
    guarded_block(int n, int offset)
        : block_(static_cast<std::size_t>(n + 2 * wall + offset), brick()),
          start_(wall + offset),
          count_(n) {}
    guarded_block(const Element* content, int n, int offset) : guarded_block(n, offset) {
        if (n > 0)
            std::memcpy(data(), content, static_cast<std::size_t>(n) * sizeof(Element));
    }
    Element* data() { return block_.data() + start_; }
    bool walls_stand() const {
        for (std::size_t i = 0; i < block_.size(); ++i) {
            const bool inside =
                i >= static_cast<std::size_t>(start_) && i < static_cast<std::size_t>(start_ + count_);
            if (!inside && !same_bits(block_[i], brick()))
                return false;
        }
        return true;
    }

private:
    static constexpr int wall = 32;
    static constexpr Element brick() { return static_cast<Element>(-12345); }

    std::vector<Element> block_;
    int start_;
    int count_;
};

/// Values of all sizes and signs; every sixth or so is one of those on which arithmetic turns.
inline std::vector<float> test_values(int n, unsigned seed) {
    using limits = std::numeric_limits<float>;
    static constexpr float turning_points[] = {0.0F,
                                               -0.0F,
                                               1.0F,
                                               -1.0F,
                                               0.5F,
                                               2.0F,
                                               limits::max(),
                                               limits::lowest(),
                                               limits::min(),
                                               limits::denorm_min(),
                                               -limits::denorm_min(),
                                               limits::infinity(),
                                               -limits::infinity(),
                                               limits::quiet_NaN()};
    std::mt19937 random(seed);
    std::uniform_int_distribution<std::size_t> choice(0, 6 * std::size(turning_points));
    std::uniform_real_distribution<float> mantissa(-2.0F, 2.0F);
    std::uniform_int_distribution<int> exponent(-20, 20);
    std::vector<float> values(static_cast<std::size_t>(n));
    for (float& value : values) {
        const std::size_t chosen = choice(random);
        value = chosen < std::size(turning_points) ? turning_points[chosen]
                                                   : std::ldexp(mantissa(random), exponent(random));
    }
    return values;
}

} // namespace vector_checks
