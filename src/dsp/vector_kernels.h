#pragma once

#include <cstddef>
#include <cstdint>

#include "dsp/vector_primitives.h"

// The inner loops behind the vector layer, one table of them per instruction set. A kernel gets valid
// pointers; the public functions have done the tests. `d` may be the same array as a source.

struct arithmetic_kernels {
    void (*set)(float* x, float c, std::size_t n);
    void (*add)(const float* a, const float* b, float* d, std::size_t n);
    void (*add_constant)(const float* a, float* d, float c, std::size_t n);
    void (*subtract)(const float* a, const float* b, float* d, std::size_t n); ///< d = b - a
    void (*multiply)(const float* a, const float* b, float* d, std::size_t n);
    void (*multiply_constant)(const float* a, float* d, float c, std::size_t n);
    void (*divide)(const float* a, const float* b, float* d, std::size_t n); ///< d = b / a
    void (*divide_by_constant)(const float* a, float* d, float c, std::size_t n);
    void (*divide_constant)(const float* a, float* d, float c, std::size_t n); ///< d = c / a
    void (*absolute)(const float* a, float* d, std::size_t n);
    void (*square)(const float* a, float* d, std::size_t n);
    void (*square_root)(const float* a, float* d, std::size_t n);
    void (*larger)(const float* a, const float* b, float* d, std::size_t n);
    void (*add_and_scale)(const float* a, const float* b, float* d, float c,
                          std::size_t n); ///< d = (a + b) c
    void (*scale_and_add_twice)(float* x, float c, float* first, float* second, std::size_t n);
    float (*sum)(const float* a, std::size_t n);
    float (*largest)(const float* a, std::size_t n);
    float (*smallest)(const float* a, std::size_t n);
};

struct complex_kernels {
    void (*set)(complex32f* x, complex32f c, std::size_t n);
    void (*multiply)(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n);
    void (*multiply_constant)(const complex32f* a, complex32f* d, complex32f c, std::size_t n);
    void (*divide)(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n); ///< d = b / a
    void (*divide_by_constant)(const complex32f* a, complex32f* d, complex32f c, std::size_t n);
    void (*join)(const float* re, const float* im, complex32f* d, std::size_t n);
    void (*split)(const complex32f* a, float* re, float* im, std::size_t n);
    void (*real_part)(const complex32f* a, float* d, std::size_t n);
    void (*imaginary_part)(const complex32f* a, float* d, std::size_t n);
    void (*magnitude)(const complex32f* a, float* d, std::size_t n);
    void (*magnitude_of_parts)(const float* re, const float* im, float* d, std::size_t n);
    void (*squared_magnitude)(const complex32f* a, float* d, std::size_t n);
};

struct math_kernels {
    void (*hyperbolic_tangent)(const float* a, float* d, std::size_t n);
    void (*sigmoid)(const float* a, float* d, std::size_t n);
    void (*common_logarithm)(const float* a, float* d, std::size_t n);
    void (*power)(const float* a, const float* b, float* d, std::size_t n);
    void (*phase)(const complex32f* a, float* d, std::size_t n);
    void (*polar_to_cart)(const float* mag, const float* phase, complex32f* d, std::size_t n);
    void (*multiply_by_hann_window)(float* x, std::size_t n);
};

struct conversion_kernels {
    void (*deinterleave_short)(const short* a, float* left, float* right, std::size_t n);
    void (*deinterleave_double)(const double* a, float* left, float* right, std::size_t n);
    void (*interleave_short)(const float* left, const float* right, short* d, std::size_t n);
    void (*interleave_double)(const float* left, const float* right, double* d, std::size_t n);
    void (*short_to_float)(const short* a, float* d, std::size_t n);
    void (*float_to_short)(const float* a, short* d, std::size_t n);
    void (*float_to_double)(const float* a, double* d, std::size_t n);
    void (*double_to_float)(const double* a, float* d, std::size_t n);
};

struct bin_kernels;       // in bin_kernels.h
struct fft_kernels;       // in fft_kernels.h
struct layer_kernels;     // in layer_kernels.h
struct resampler_kernels; // in resampler_kernels.h

/// One instruction set's kernels, family by family.
struct vector_kernels {
    const arithmetic_kernels* arithmetic;
    const complex_kernels* complex;
    const math_kernels* math;
    const conversion_kernels* conversion;
    const fft_kernels* fft;
    const layer_kernels* layers;
    const resampler_kernels* resampler;
    const bin_kernels* bins;
};

/// The reference, plain loops, whose bits every other table repeats.
extern const arithmetic_kernels scalar_arithmetic_kernels;
extern const complex_kernels scalar_complex_kernels;
extern const math_kernels scalar_math_kernels;
extern const conversion_kernels scalar_conversion_kernels;

/// The kernels in use, a variable for each family: scalar ones until qnl_start_vector_layer. Copies of the tables,
/// so that a call looks in one place only, and hidden, so that it finds that without the table of global symbols.
extern arithmetic_kernels active_arithmetic_kernels __attribute__((visibility("hidden")));
extern complex_kernels active_complex_kernels __attribute__((visibility("hidden")));
extern math_kernels active_math_kernels __attribute__((visibility("hidden")));
extern conversion_kernels active_conversion_kernels __attribute__((visibility("hidden")));
