#include "dsp/vector_primitives.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "dsp/vector_kernels.h"

namespace {

std::size_t count(int n) {
    return static_cast<std::size_t>(n);
}

bool nothing_to_do(const void* x, int n) {
    return x == nullptr || n <= 0;
}

bool nothing_to_do(const void* a, const void* d, int n) {
    return a == nullptr || nothing_to_do(d, n);
}

bool nothing_to_do(const void* a, const void* b, const void* d, int n) {
    return a == nullptr || nothing_to_do(b, d, n);
}

// A complex block as twice as many floats, for what treats both parts alike.
const float* parts(const complex32f* a) {
    return reinterpret_cast<const float*>(a);
}

float* parts(complex32f* d) {
    return reinterpret_cast<float*>(d);
}

std::size_t parts_count(int n) {
    return 2 * count(n);
}

template <class Element>
void clear(Element* x, int n) {
    if (!nothing_to_do(x, n))
        std::memset(static_cast<void*>(x), 0, count(n) * sizeof(Element));
}

template <class Element>
void move(const Element* a, Element* d, int n) {
    if (!nothing_to_do(a, d, n))
        std::memmove(static_cast<void*>(d), a, count(n) * sizeof(Element));
}

template <class Element>
void shift_and_clear(Element* x, int shift, int n) {
    if (nothing_to_do(x, n) || shift <= 0)
        return;
    const int cleared = std::min(shift, n);
    move(x + cleared, x, n - cleared);
    clear(x + (n - cleared), cleared);
}

} // namespace

void qnl_set(float* x, float c, int n) {
    if (!nothing_to_do(x, n))
        active_arithmetic_kernels.set(x, c, count(n));
}

void qnl_set(complex32f* x, complex32f c, int n) {
    if (!nothing_to_do(x, n))
        active_complex_kernels.set(x, c, count(n));
}

void qnl_zero(float* x, int n) {
    clear(x, n);
}

void qnl_zero(complex32f* x, int n) {
    clear(x, n);
}

void qnl_zero(short* x, int n) {
    clear(x, n);
}

void qnl_zero(double* x, int n) {
    clear(x, n);
}

void qnl_copy(const float* a, float* d, int n) {
    move(a, d, n);
}

void qnl_copy(const short* a, short* d, int n) {
    move(a, d, n);
}

void qnl_move(const float* a, float* d, int n) {
    move(a, d, n);
}

void qnl_move(const complex32f* a, complex32f* d, int n) {
    move(a, d, n);
}

void qnl_shift_and_clear(float* x, int shift, int n) {
    shift_and_clear(x, shift, n);
}

void qnl_shift_and_clear(complex32f* x, int shift, int n) {
    shift_and_clear(x, shift, n);
}

void qnl_add(const float* a, const float* b, float* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_arithmetic_kernels.add(a, b, d, count(n));
}

void qnl_add(const complex32f* a, const complex32f* b, complex32f* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_arithmetic_kernels.add(parts(a), parts(b), parts(d), parts_count(n));
}

void qnl_add_I(const float* a, float* x, int n) {
    qnl_add(x, a, x, n);
}

void qnl_add_I(const complex32f* a, complex32f* x, int n) {
    qnl_add(x, a, x, n);
}

void qnl_addC_I(float* x, float c, int n) {
    if (!nothing_to_do(x, n))
        active_arithmetic_kernels.add_constant(x, x, c, count(n));
}

void qnl_subtract(const float* a, const float* b, float* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_arithmetic_kernels.subtract(a, b, d, count(n));
}

void qnl_subtract(const complex32f* a, const complex32f* b, complex32f* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_arithmetic_kernels.subtract(parts(a), parts(b), parts(d), parts_count(n));
}

void qnl_subtract_I(const float* a, float* x, int n) {
    qnl_subtract(a, x, x, n);
}

void qnl_subtract_I(const complex32f* a, complex32f* x, int n) {
    qnl_subtract(a, x, x, n);
}

void qnl_subtractC(const float* a, float* d, float c, int n) {
    if (!nothing_to_do(a, d, n))
        active_arithmetic_kernels.add_constant(a, d, -c, count(n));
}

void qnl_subtractC_I(float* x, float c, int n) {
    qnl_addC_I(x, -c, n);
}

void qnl_multiply(const float* a, const float* b, float* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_arithmetic_kernels.multiply(a, b, d, count(n));
}

void qnl_multiply(const complex32f* a, const complex32f* b, complex32f* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_complex_kernels.multiply(a, b, d, count(n));
}

void qnl_multiply_I(const float* a, float* x, int n) {
    qnl_multiply(x, a, x, n);
}

void qnl_multiply_I(const complex32f* a, complex32f* x, int n) {
    qnl_multiply(x, a, x, n);
}

void qnl_multiplyC(const float* a, float* d, float c, int n) {
    if (!nothing_to_do(a, d, n))
        active_arithmetic_kernels.multiply_constant(a, d, c, count(n));
}

void qnl_multiplyC(const complex32f* a, complex32f* d, complex32f c, int n) {
    if (!nothing_to_do(a, d, n))
        active_complex_kernels.multiply_constant(a, d, c, count(n));
}

void qnl_multiplyC_I(float* x, float c, int n) {
    qnl_multiplyC(x, x, c, n);
}

void qnl_multiplyC_I(complex32f* x, complex32f c, int n) {
    qnl_multiplyC(x, x, c, n);
}

void qnl_divide(const float* a, const float* b, float* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_arithmetic_kernels.divide(a, b, d, count(n));
}

void qnl_divide(const complex32f* a, const complex32f* b, complex32f* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_complex_kernels.divide(a, b, d, count(n));
}

void qnl_divide_I(const complex32f* a, complex32f* x, int n) {
    qnl_divide(a, x, x, n);
}

void qnl_divideC(const float* a, float* d, float c, int n) {
    if (!nothing_to_do(a, d, n) && c != 0.0F)
        active_arithmetic_kernels.divide_by_constant(a, d, c, count(n));
}

void qnl_divideC(const complex32f* a, complex32f* d, complex32f c, int n) {
    if (!nothing_to_do(a, d, n) && (c.re != 0.0F || c.im != 0.0F))
        active_complex_kernels.divide_by_constant(a, d, c, count(n));
}

void qnl_divideC_I(float* x, float c, int n) {
    qnl_divideC(x, x, c, n);
}

void qnl_divideC_I(complex32f* x, complex32f c, int n) {
    qnl_divideC(x, x, c, n);
}

void qnl_divideReverseC(const float* a, float* d, float c, int n) {
    if (!nothing_to_do(a, d, n))
        active_arithmetic_kernels.divide_constant(a, d, c, count(n));
}

void qnl_abs(const float* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_arithmetic_kernels.absolute(a, d, count(n));
}

void qnl_sqr(const float* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_arithmetic_kernels.square(a, d, count(n));
}

void qnl_sqr_I(float* x, int n) {
    qnl_sqr(x, x, n);
}

void qnl_sqrt_I(float* x, int n) {
    if (!nothing_to_do(x, n))
        active_arithmetic_kernels.square_root(x, x, count(n));
}

void qnl_max_every(const float* a, const float* b, float* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_arithmetic_kernels.larger(a, b, d, count(n));
}

void qnl_sigmoid(const float* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_math_kernels.sigmoid(a, d, count(n));
}

void qnl_tanh(const float* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_math_kernels.hyperbolic_tangent(a, d, count(n));
}

void qnl_log10(const float* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_math_kernels.common_logarithm(a, d, count(n));
}

void qnl_log10_I(float* x, int n) {
    qnl_log10(x, x, n);
}

void qnl_pow(const float* a, const float* b, float* d, int n) {
    if (!nothing_to_do(a, b, d, n))
        active_math_kernels.power(a, b, d, count(n));
}

void qnl_constant_to_power(const float* a, float* d, float c, int n) {
    if (nothing_to_do(a, d, n))
        return;
    for (int i = 0; i < n; ++i)
        d[i] = std::pow(c, a[i]);
}

void qnl_constant_to_power_I(float* x, float c, int n) {
    qnl_constant_to_power(x, x, c, n);
}

void qnl_real_to_complex(const float* re, const float* im, complex32f* d, int n) {
    if (!nothing_to_do(re, im, d, n))
        active_complex_kernels.join(re, im, d, count(n));
}

void qnl_complex_to_real(const complex32f* a, float* re, float* im, int n) {
    if (!nothing_to_do(a, re, im, n))
        active_complex_kernels.split(a, re, im, count(n));
}

void qnl_get_real_part(const complex32f* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_complex_kernels.real_part(a, d, count(n));
}

void qnl_get_imag_part(const complex32f* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_complex_kernels.imaginary_part(a, d, count(n));
}

void qnl_magnitude(const complex32f* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_complex_kernels.magnitude(a, d, count(n));
}

void qnl_magnitude(const float* re, const float* im, float* d, int n) {
    if (!nothing_to_do(re, im, d, n))
        active_complex_kernels.magnitude_of_parts(re, im, d, count(n));
}

void qnl_phase(const complex32f* a, float* d, int n) {
    if (!nothing_to_do(a, d, n))
        active_math_kernels.phase(a, d, count(n));
}

void qnl_polar_to_cart(const float* mag, const float* phase, complex32f* d, int n) {
    if (!nothing_to_do(mag, phase, d, n))
        active_math_kernels.polar_to_cart(mag, phase, d, count(n));
}

float qnl_mean(const float* a, int n) {
    return nothing_to_do(a, n) ? 0.0F : active_arithmetic_kernels.sum(a, count(n)) / static_cast<float>(n);
}

float qnl_max(const float* a, int n) {
    return nothing_to_do(a, n) ? 0.0F : active_arithmetic_kernels.largest(a, count(n));
}

float qnl_min(const float* a, int n) {
    return nothing_to_do(a, n) ? 0.0F : active_arithmetic_kernels.smallest(a, count(n));
}

void qnl_hann_window_I(float* x, int n) {
    if (!nothing_to_do(x, n) && n >= 3)
        active_math_kernels.multiply_by_hann_window(x, count(n));
}

void convert_stereo_to_mono(float* x, float gain, int n) {
    if (!nothing_to_do(x, n))
        active_arithmetic_kernels.add_and_scale(x, x + n, x, gain, count(n));
}

void qnl_mix_to_both_sides_I(float* x, float gain, float* left, float* right, int n) {
    if (!nothing_to_do(x, n) && left != nullptr && right != nullptr)
        active_arithmetic_kernels.scale_and_add_twice(x, gain, left, right, count(n));
}
