// The loops that the layer is compared with, for the compiler to vectorise as well as it can. Compiled
// several times; includes nothing of the standard library, so that no inline function of a wide build is
// linked elsewhere.

#include "operations.h"

namespace PLAIN_LOOPS {
namespace {

struct complex {
    float re;
    float im;
};

using source = const float* __restrict;
using destination = float* __restrict;
using complex_source = const complex* __restrict;
using complex_destination = complex* __restrict;

const complex* as_complex(const float* a) {
    return reinterpret_cast<const complex*>(a);
}

complex* as_complex(float* d) {
    return reinterpret_cast<complex*>(d);
}

complex product(complex a, complex b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

complex quotient(complex dividend, complex divisor) {
    const double ar = divisor.re;
    const double ai = divisor.im;
    const double br = dividend.re;
    const double bi = dividend.im;
    const double scale = 1.0 / (ar * ar + ai * ai);
    return {static_cast<float>((br * ar + bi * ai) * scale), static_cast<float>((bi * ar - br * ai) * scale)};
}

void set(source, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = c;
}

void add(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = a[i] + b[i];
}

void add_in_place(source a, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] += a[i];
}

void add_constant_in_place(source, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] += c;
}

void subtract(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = b[i] - a[i];
}

void subtract_in_place(source a, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] -= a[i];
}

void subtract_constant(source a, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = a[i] - c;
}

void subtract_constant_in_place(source, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] -= c;
}

void multiply(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = a[i] * b[i];
}

void multiply_in_place(source a, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] *= a[i];
}

void multiply_constant(source a, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = a[i] * c;
}

void multiply_constant_in_place(source, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] *= c;
}

void divide(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = b[i] / a[i];
}

void divide_constant(source a, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = a[i] / c;
}

void divide_constant_in_place(source, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] /= c;
}

void divide_reverse_constant(source a, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = c / a[i];
}

void abs(source a, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = __builtin_fabsf(a[i]);
}

void sqr(source a, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = a[i] * a[i];
}

void sqr_in_place(source, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] *= d[i];
}

void sqrt_in_place(source, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = __builtin_sqrtf(d[i]);
}

void max_every(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = a[i] > b[i] ? a[i] : b[i];
}

void magnitude_of_parts(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        d[i] = __builtin_sqrtf(a[i] * a[i] + b[i] * b[i]);
}

void stereo_to_mono(source, source, destination d, float c, int n) {
    source right = d + n;
    for (int i = 0; i < n; ++i)
        d[i] = (d[i] + right[i]) * c;
}

void real_to_complex(source a, source b, destination d, float, int n) {
    const complex_destination z = as_complex(d);
    for (int i = 0; i < n; ++i)
        z[i] = {a[i], b[i]};
}

void complex_to_real(source a, source, destination d, float, int n) {
    const complex_source z = as_complex(a);
    destination im = d + n;
    for (int i = 0; i < n; ++i) {
        d[i] = z[i].re;
        im[i] = z[i].im;
    }
}

void get_real_part(source a, source, destination d, float, int n) {
    const complex_source z = as_complex(a);
    for (int i = 0; i < n; ++i)
        d[i] = z[i].re;
}

void get_imag_part(source a, source, destination d, float, int n) {
    const complex_source z = as_complex(a);
    for (int i = 0; i < n; ++i)
        d[i] = z[i].im;
}

void magnitude(source a, source, destination d, float, int n) {
    const complex_source z = as_complex(a);
    for (int i = 0; i < n; ++i)
        d[i] = __builtin_sqrtf(z[i].re * z[i].re + z[i].im * z[i].im);
}

void complex_set(source, source, destination d, float c, int n) {
    const complex_destination z = as_complex(d);
    for (int i = 0; i < n; ++i)
        z[i] = {c, 0.0F};
}

void complex_add(source a, source b, destination d, float, int n) {
    for (int i = 0; i < 2 * n; ++i)
        d[i] = a[i] + b[i];
}

void complex_add_in_place(source a, source, destination d, float, int n) {
    for (int i = 0; i < 2 * n; ++i)
        d[i] += a[i];
}

void complex_subtract(source a, source b, destination d, float, int n) {
    for (int i = 0; i < 2 * n; ++i)
        d[i] = b[i] - a[i];
}

void complex_subtract_in_place(source a, source, destination d, float, int n) {
    for (int i = 0; i < 2 * n; ++i)
        d[i] -= a[i];
}

void complex_multiply(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = product(as_complex(a)[i], as_complex(b)[i]);
}

void complex_multiply_in_place(source a, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = product(as_complex(d)[i], as_complex(a)[i]);
}

void complex_multiply_constant(source a, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = product(as_complex(a)[i], {c, 0.0F});
}

void complex_multiply_constant_in_place(source, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = product(as_complex(d)[i], {c, 0.0F});
}

void complex_divide(source a, source b, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = quotient(as_complex(b)[i], as_complex(a)[i]);
}

void complex_divide_in_place(source a, source, destination d, float, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = quotient(as_complex(d)[i], as_complex(a)[i]);
}

void complex_divide_constant(source a, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = quotient(as_complex(a)[i], {c, 0.0F});
}

void complex_divide_constant_in_place(source, source, destination d, float c, int n) {
    for (int i = 0; i < n; ++i)
        as_complex(d)[i] = quotient(as_complex(d)[i], {c, 0.0F});
}

} // namespace

const named_call loops[operation_count] = {
    {"set", set},
    {"add", add},
    {"add_I", add_in_place},
    {"addC_I", add_constant_in_place},
    {"subtract", subtract},
    {"subtract_I", subtract_in_place},
    {"subtractC", subtract_constant},
    {"subtractC_I", subtract_constant_in_place},
    {"multiply", multiply},
    {"multiply_I", multiply_in_place},
    {"multiplyC", multiply_constant},
    {"multiplyC_I", multiply_constant_in_place},
    {"divide", divide},
    {"divideC", divide_constant},
    {"divideC_I", divide_constant_in_place},
    {"divideReverseC", divide_reverse_constant},
    {"abs", abs},
    {"sqr", sqr},
    {"sqr_I", sqr_in_place},
    {"sqrt_I", sqrt_in_place},
    {"max_every", max_every},
    {"magnitude_of_parts", magnitude_of_parts},
    {"stereo_to_mono", stereo_to_mono},
    {"real_to_complex", real_to_complex},
    {"complex_to_real", complex_to_real},
    {"get_real_part", get_real_part},
    {"get_imag_part", get_imag_part},
    {"magnitude", magnitude},
    {"complex_set", complex_set},
    {"complex_add", complex_add},
    {"complex_add_I", complex_add_in_place},
    {"complex_subtract", complex_subtract},
    {"complex_subtract_I", complex_subtract_in_place},
    {"complex_multiply", complex_multiply},
    {"complex_multiply_I", complex_multiply_in_place},
    {"complex_multiplyC", complex_multiply_constant},
    {"complex_multiplyC_I", complex_multiply_constant_in_place},
    {"complex_divide", complex_divide},
    {"complex_divide_I", complex_divide_in_place},
    {"complex_divideC", complex_divide_constant},
    {"complex_divideC_I", complex_divide_constant_in_place},
};

} // namespace PLAIN_LOOPS
