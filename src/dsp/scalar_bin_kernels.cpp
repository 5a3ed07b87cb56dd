#include "dsp/bin_kernels.h"

#include <cmath>
#include <cstddef>
#include <limits>

namespace {

bool is_finite(float x) {
    return std::fabs(x) <= std::numeric_limits<float>::max();
}

float smaller_of(float a, float b) {
    return a < b ? a : b;
}

float magnitude(complex32f x) {
    return std::sqrt(x.re * x.re + x.im * x.im);
}

complex32f common_part(complex32f left, complex32f right) {
    const float dr = left.re - right.re;
    const float di = left.im - right.im;
    if (dr == 0.0F)
        return di == 0.0F ? left : complex32f{smaller_of(left.re, right.re), 0.0F};
    if (di == 0.0F)
        return {0.0F, smaller_of(left.im, right.im)};
    // The foot of the perpendicular from zero to the line through both.
    const float slope = di / dr;
    const float inverse_slope = 1.0F / slope;
    const float x = -(left.im - slope * left.re) / (slope + inverse_slope);
    const float y = -inverse_slope * x;
    const bool rising = left.re < right.re;
    const bool inside = x >= (rising ? left.re : right.re) && x <= (rising ? right.re : left.re);
    if (inside && is_finite(x) && is_finite(y))
        return {x, y};
    return magnitude(right) > magnitude(left) ? left : right;
}

void separate_centre(complex32f* left, complex32f* right, complex32f* centre, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        const complex32f common = common_part(left[k], right[k]);
        centre[k] = common;
        left[k] = {left[k].re - common.re, left[k].im - common.im};
        right[k] = {right[k].re - common.re, right[k].im - common.im};
    }
}

} // namespace

constexpr bin_kernels scalar_bin_kernels = {separate_centre};

bin_kernels active_bin_kernels = scalar_bin_kernels;
