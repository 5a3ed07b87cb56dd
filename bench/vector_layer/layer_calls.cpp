#include "dsp/vector_primitives.h"
#include "operations.h"

namespace {

using in = const float*;
using out = float*;

const complex32f* z(const float* a) {
    return reinterpret_cast<const complex32f*>(a);
}

complex32f* z(float* d) {
    return reinterpret_cast<complex32f*>(d);
}

/// Whole, not made from `c`: a pair written by halves and read at once waits for the first to arrive.
constexpr complex32f one = {1.0F, 0.0F};

} // namespace

const named_call layer_calls[operation_count] = {
    {"set", [](in, in, out d, float c, int n) { qnl_set(d, c, n); }},
    {"add", [](in a, in b, out d, float, int n) { qnl_add(a, b, d, n); }},
    {"add_I", [](in a, in, out d, float, int n) { qnl_add_I(a, d, n); }},
    {"addC_I", [](in, in, out d, float c, int n) { qnl_addC_I(d, c, n); }},
    {"subtract", [](in a, in b, out d, float, int n) { qnl_subtract(a, b, d, n); }},
    {"subtract_I", [](in a, in, out d, float, int n) { qnl_subtract_I(a, d, n); }},
    {"subtractC", [](in a, in, out d, float c, int n) { qnl_subtractC(a, d, c, n); }},
    {"subtractC_I", [](in, in, out d, float c, int n) { qnl_subtractC_I(d, c, n); }},
    {"multiply", [](in a, in b, out d, float, int n) { qnl_multiply(a, b, d, n); }},
    {"multiply_I", [](in a, in, out d, float, int n) { qnl_multiply_I(a, d, n); }},
    {"multiplyC", [](in a, in, out d, float c, int n) { qnl_multiplyC(a, d, c, n); }},
    {"multiplyC_I", [](in, in, out d, float c, int n) { qnl_multiplyC_I(d, c, n); }},
    {"divide", [](in a, in b, out d, float, int n) { qnl_divide(a, b, d, n); }},
    {"divideC", [](in a, in, out d, float c, int n) { qnl_divideC(a, d, c, n); }},
    {"divideC_I", [](in, in, out d, float c, int n) { qnl_divideC_I(d, c, n); }},
    {"divideReverseC", [](in a, in, out d, float c, int n) { qnl_divideReverseC(a, d, c, n); }},
    {"abs", [](in a, in, out d, float, int n) { qnl_abs(a, d, n); }},
    {"sqr", [](in a, in, out d, float, int n) { qnl_sqr(a, d, n); }},
    {"sqr_I", [](in, in, out d, float, int n) { qnl_sqr_I(d, n); }},
    {"sqrt_I", [](in, in, out d, float, int n) { qnl_sqrt_I(d, n); }},
    {"max_every", [](in a, in b, out d, float, int n) { qnl_max_every(a, b, d, n); }},
    {"magnitude_of_parts", [](in a, in b, out d, float, int n) { qnl_magnitude(a, b, d, n); }},
    {"stereo_to_mono", [](in, in, out d, float c, int n) { convert_stereo_to_mono(d, c, n); }},
    {"real_to_complex", [](in a, in b, out d, float, int n) { qnl_real_to_complex(a, b, z(d), n); }},
    {"complex_to_real", [](in a, in, out d, float, int n) { qnl_complex_to_real(z(a), d, d + n, n); }},
    {"get_real_part", [](in a, in, out d, float, int n) { qnl_get_real_part(z(a), d, n); }},
    {"get_imag_part", [](in a, in, out d, float, int n) { qnl_get_imag_part(z(a), d, n); }},
    {"magnitude", [](in a, in, out d, float, int n) { qnl_magnitude(z(a), d, n); }},
    {"complex_set", [](in, in, out d, float, int n) { qnl_set(z(d), one, n); }},
    {"complex_add", [](in a, in b, out d, float, int n) { qnl_add(z(a), z(b), z(d), n); }},
    {"complex_add_I", [](in a, in, out d, float, int n) { qnl_add_I(z(a), z(d), n); }},
    {"complex_subtract", [](in a, in b, out d, float, int n) { qnl_subtract(z(a), z(b), z(d), n); }},
    {"complex_subtract_I", [](in a, in, out d, float, int n) { qnl_subtract_I(z(a), z(d), n); }},
    {"complex_multiply", [](in a, in b, out d, float, int n) { qnl_multiply(z(a), z(b), z(d), n); }},
    {"complex_multiply_I", [](in a, in, out d, float, int n) { qnl_multiply_I(z(a), z(d), n); }},
    {"complex_multiplyC", [](in a, in, out d, float, int n) { qnl_multiplyC(z(a), z(d), one, n); }},
    {"complex_multiplyC_I", [](in, in, out d, float, int n) { qnl_multiplyC_I(z(d), one, n); }},
    {"complex_divide", [](in a, in b, out d, float, int n) { qnl_divide(z(a), z(b), z(d), n); }},
    {"complex_divide_I", [](in a, in, out d, float, int n) { qnl_divide_I(z(a), z(d), n); }},
    {"complex_divideC", [](in a, in, out d, float, int n) { qnl_divideC(z(a), z(d), one, n); }},
    {"complex_divideC_I", [](in, in, out d, float, int n) { qnl_divideC_I(z(d), one, n); }},
};
