#include <cmath>
#include <cstddef>

#include "dsp/vector_kernels.h"

namespace {

void set(complex32f* x, complex32f c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        x[i] = {c.re, c.im};
}

complex32f product(complex32f a, complex32f b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

void multiply(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = product(a[i], b[i]);
}

void multiply_constant(const complex32f* a, complex32f* d, complex32f c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = product(a[i], c);
}

// Products of two floats are exact in double and can neither overflow nor vanish there.
complex32f quotient(complex32f dividend, complex32f divisor) {
    const double ar = divisor.re;
    const double ai = divisor.im;
    const double br = dividend.re;
    const double bi = dividend.im;
    const double scale = 1.0 / (ar * ar + ai * ai);
    return {static_cast<float>((br * ar + bi * ai) * scale), static_cast<float>((bi * ar - br * ai) * scale)};
}

void divide(const complex32f* a, const complex32f* b, complex32f* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = quotient(b[i], a[i]);
}

void divide_by_constant(const complex32f* a, complex32f* d, complex32f c, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = quotient(a[i], c);
}

void join(const float* re, const float* im, complex32f* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = {re[i], im[i]};
}

void split(const complex32f* a, float* re, float* im, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        re[i] = a[i].re;
        im[i] = a[i].im;
    }
}

void real_part(const complex32f* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i].re;
}

void imaginary_part(const complex32f* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i].im;
}

void magnitude(const complex32f* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::sqrt(a[i].re * a[i].re + a[i].im * a[i].im);
}

void magnitude_of_parts(const float* re, const float* im, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = std::sqrt(re[i] * re[i] + im[i] * im[i]);
}

void squared_magnitude(const complex32f* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = a[i].re * a[i].re + a[i].im * a[i].im;
}

} // namespace

constexpr complex_kernels scalar_complex_kernels = {
    set,   multiply,  multiply_constant, divide,    divide_by_constant, join,
    split, real_part, imaginary_part,    magnitude, magnitude_of_parts, squared_magnitude,
};

complex_kernels active_complex_kernels = scalar_complex_kernels;
