#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "dsp/angle_reduction.h"
#include "dsp/math_coefficients.h"
#include "dsp/vector_kernels.h"

// Everything is multiplications, additions, divisions and selections in a fixed order, so that the vectorised
// kernels repeat the same bits.

namespace {

using namespace coefficients;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

template <class To, class From>
To bits_as(From from) {
    static_assert(sizeof(To) == sizeof(From));
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

template <class Number, std::size_t Terms>
Number polynomial(const Number (&series)[Terms], Number x) {
    Number value = series[Terms - 1];
    for (std::size_t i = Terms - 1; i-- > 0;)
        value = value * x + series[i];
    return value;
}

float tanh_of(float x) {
    const float size = std::fabs(x);
    const float z = size * size;
    const float ratio = size * polynomial(tanh_numerator, z) / polynomial(tanh_denominator, z);
    const float limited = ratio > 1.0F ? 1.0F : ratio;
    return std::copysign(size >= tanh_limit ? 1.0F : limited, x);
}

/// Within the range of double; beyond that of float it gives infinity and 0.
float exp_of(float x) {
    double y = x;
    y = y > exp_limit ? exp_limit : y;
    y = y < -exp_limit ? -exp_limit : y;
    const double steps = y * exp_steps_per_unit;
    const double shifted = steps + rounding_shift;
    const double f = steps - (shifted - rounding_shift);
    const auto whole = bits_as<std::uint64_t>(shifted);
    const std::uint64_t step = whole % 32;
    const auto power = bits_as<double>(bits_as<std::uint64_t>(exp_fractions[step]) + ((whole - step) << 47));
    const double high = exp_series[2] * f + exp_series[1];
    return static_cast<float>((high * (f * f) + (exp_series[0] * f + 1.0)) * power);
}

float log10_of(float x) {
    constexpr float denormal_scale = 33554432.0F; // 2 to the power 25
    const bool denormal = x < std::numeric_limits<float>::min();
    const auto bits = bits_as<std::uint32_t>(denormal ? x * denormal_scale : x) + (one_f32 - sqrt_half_f32);
    const float exponent =
        static_cast<float>(static_cast<std::int32_t>(bits >> 23)) - (denormal ? 152.0F : 127.0F);
    const auto m = bits_as<float>((bits & mantissa_f32) + sqrt_half_f32);
    const float s = (m - 1.0F) / (m + 1.0F);
    const float value = exponent * log10_of_2 + s * polynomial(log10_series, s * s);
    const float finite_or_not = x < infinity ? value : x;
    return x > 0.0F ? finite_or_not : (x == 0.0F ? -infinity : not_a_number);
}

/// Of a positive number that was a float. Infinity and NaN pass.
double log2_of(double x) {
    const auto bits = bits_as<std::uint64_t>(x) + (one_f64 - sqrt_half_f64);
    const auto exponent = bits_as<double>((bits >> 52) | two_to_52_f64) - (4503599627370496.0 + 1023.0);
    const auto m = bits_as<double>((bits & mantissa_f64) + sqrt_half_f64);
    const double s = (m - 1.0) / (m + 1.0);
    const double value = exponent + s * polynomial(log2_series, s * s);
    return x < infinity ? value : x;
}

/// 2 to the power x, as far as a float holds it.
double exp2_of(double x) {
    constexpr double limit = 200.0;
    const double upper = x > limit ? limit : x;
    const double y = upper < -limit ? -limit : upper;
    const double shifted = y + rounding_shift;
    const double f = y - (shifted - rounding_shift);
    const auto power = bits_as<double>((bits_as<std::uint64_t>(shifted) << 52) + one_f64);
    return (1.0 + f * polynomial(exp2_series, f)) * power;
}

float pow_of(float base, float exponent) {
    const double a = base;
    const double b = exponent;
    const double size = std::fabs(a);
    const double logarithm = size == 0.0 ? -infinity : log2_of(size);
    const double value = exp2_of(b * logarithm);

    const double shifted = b + rounding_shift;
    const bool small = std::fabs(b) < first_even_only;
    const bool broken = small && shifted - rounding_shift != b;
    const bool odd = small && !broken && (bits_as<std::uint64_t>(shifted) & 1U) != 0;
    const double with_sign = odd ? std::copysign(value, a) : value;
    const bool undefined = a < 0.0 && size < infinity && broken;
    const bool one = b == 0.0 || a == 1.0 || (size == 1.0 && std::fabs(b) == infinity);
    return static_cast<float>(one ? 1.0 : (undefined ? static_cast<double>(not_a_number) : with_sign));
}

float phase_of(complex32f a) {
    const double x = std::fabs(static_cast<double>(a.re));
    const double y = std::fabs(static_cast<double>(a.im));
    const bool steep = y > x;
    const double smaller = steep ? x : y;
    const double larger = steep ? y : x;
    const double ratio = smaller == larger ? 1.0 : smaller / larger; // also of two infinities
    const double t = x + y == 0.0 ? 0.0 : ratio;
    const double octant = t * polynomial(atan_series, t * t);
    const double quadrant = steep ? half_pi - octant : octant;
    const double angle = std::signbit(a.re) ? pi - quadrant : quadrant;
    return static_cast<float>(std::copysign(angle, static_cast<double>(a.im)));
}

struct sine_and_cosine {
    double sine;
    double cosine;
};

sine_and_cosine of_angle(reduced_angle angle) {
    const double z = angle.rest * angle.rest;
    const double s = angle.rest * (1.0 + z * polynomial(sine_series, z)); // keeps the sign of a zero
    const double c = 1.0 + z * polynomial(cosine_series, z);
    const bool swapped = (angle.quadrant & 1U) != 0;
    const double sine = swapped ? c : s;
    const double cosine = swapped ? s : c;
    return {(angle.quadrant & 2U) != 0 ? -sine : sine, ((angle.quadrant + 1) & 2U) != 0 ? -cosine : cosine};
}

reduced_angle reduce_plain(double x) {
    const double shifted = x * two_over_pi + rounding_shift;
    const double turns = shifted - rounding_shift;
    const double rest = (x - turns * half_pi_high) - turns * half_pi_low;
    return {rest, static_cast<unsigned>(bits_as<std::uint64_t>(shifted) & 3U)};
}

complex32f polar_to_cart_of(float mag, float phase) {
    const bool plain = std::fabs(phase) <= largest_plain_angle;
    const sine_and_cosine unit = of_angle(plain ? reduce_plain(phase) : reduce_large_angle(phase));
    return {static_cast<float>(mag * unit.cosine), static_cast<float>(mag * unit.sine)};
}

template <class Function>
void map(const float* a, float* d, std::size_t n, Function function) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = function(a[i]);
}

void hyperbolic_tangent(const float* a, float* d, std::size_t n) {
    map(a, d, n, tanh_of);
}

void sigmoid(const float* a, float* d, std::size_t n) {
    map(a, d, n, [](float x) { return 1.0F / (1.0F + exp_of(-x)); });
}

void common_logarithm(const float* a, float* d, std::size_t n) {
    map(a, d, n, log10_of);
}

void power(const float* a, const float* b, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = pow_of(a[i], b[i]);
}

void phase(const complex32f* a, float* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = phase_of(a[i]);
}

void polar_to_cart(const float* mag, const float* angle, complex32f* d, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        d[i] = polar_to_cart_of(mag[i], angle[i]);
}

void multiply_by_hann_window(float* x, std::size_t n) {
    const double step = 2.0 * pi / static_cast<double>(n - 1);
    for (std::size_t i = 0; i < n; ++i) {
        // Counted from the nearer end, so that the window is symmetric to the last bit.
        const auto distance = static_cast<double>(std::min(i, n - 1 - i));
        const double weight = 0.5 - 0.5 * of_angle(reduce_plain(step * distance)).cosine;
        x[i] *= static_cast<float>(weight);
    }
}

} // namespace

constexpr math_kernels scalar_math_kernels = {
    hyperbolic_tangent, sigmoid, common_logarithm, power, phase, polar_to_cart, multiply_by_hann_window,
};

math_kernels active_math_kernels = scalar_math_kernels;
