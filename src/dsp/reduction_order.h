#pragma once

#include <cstddef>

// The one order in which every instruction set reduces a block: element i goes to lane i modulo 32, and the
// lanes are folded in halves. The element comes first and what is there already second, which decides what a
// NaN does.

constexpr std::size_t reduction_lanes = 32;

inline float added(float x, float lane) {
    return x + lane;
}

inline float larger_one(float x, float lane) {
    return x > lane ? x : lane;
}

inline float smaller_one(float x, float lane) {
    return x < lane ? x : lane;
}

/// Takes in the last elements, fewer than `reduction_lanes`, and folds the lanes to one value.
template <class Combine>
float combine_lanes(float* lanes, const float* tail, std::size_t tail_count, Combine combine) {
    for (std::size_t i = 0; i < tail_count; ++i)
        lanes[i] = combine(tail[i], lanes[i]);
    for (std::size_t half = reduction_lanes / 2; half > 0; half /= 2)
        for (std::size_t lane = 0; lane < half; ++lane)
            lanes[lane] = combine(lanes[lane + half], lanes[lane]);
    return lanes[0];
}

// Sums of products in double precision: product i goes to lane i modulo 8, and the lanes are folded in halves.

constexpr std::size_t product_lanes = 8;

inline double fold_products(const double* lanes) {
    const double even = (lanes[0] + lanes[4]) + (lanes[2] + lanes[6]);
    const double odd = (lanes[1] + lanes[5]) + (lanes[3] + lanes[7]);
    return even + odd;
}
