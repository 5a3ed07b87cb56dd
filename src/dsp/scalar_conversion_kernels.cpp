#include <cstddef>

#include "dsp/conversion_factors.h"
#include "dsp/vector_kernels.h"

namespace {

// Held to the range of a short, as a float; NaN becomes 0.
float short_scale(float x) {
    const float scaled = x * to_short_scale;
    const float limited =
        scaled < lowest_short ? lowest_short : (scaled > highest_short ? highest_short : scaled);
    return limited == limited ? limited : 0.0F;
}

short truncated_short(float x) {
    return static_cast<short>(short_scale(x));
}

short rounded_short(float x) {
    return static_cast<short>((short_scale(x) + rounding_shift) - rounding_shift);
}

void deinterleave_short(const short* a, float* left, float* right, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        left[i] = static_cast<float>(a[2 * i]) * from_short_stereo;
        right[i] = static_cast<float>(a[2 * i + 1]) * from_short_stereo;
    }
}

void deinterleave_double(const double* a, float* left, float* right, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        left[i] = static_cast<float>(a[2 * i]);
        right[i] = static_cast<float>(a[2 * i + 1]);
    }
}

void interleave_short(const float* left, const float* right, short* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        d[2 * i] = truncated_short(left[i]);
        d[2 * i + 1] = truncated_short(right[i]);
    }
}

void interleave_double(const float* left, const float* right, double* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        d[2 * i] = left[i];
        d[2 * i + 1] = right[i];
    }
}

void short_to_float(const short* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = static_cast<float>(a[i]) * from_short_exact;
}

void float_to_short(const float* a, short* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = rounded_short(a[i]);
}

void float_to_double(const float* a, double* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i];
}

void double_to_float(const double* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = static_cast<float>(a[i]);
}

} // namespace

constexpr conversion_kernels scalar_conversion_kernels = {
    deinterleave_short, deinterleave_double, interleave_short, interleave_double,
    short_to_float,     float_to_short,      float_to_double,  double_to_float,
};

conversion_kernels active_conversion_kernels = scalar_conversion_kernels;
