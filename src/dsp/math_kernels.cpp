#include <cstddef>
#include <cstdint>
#include <limits>

#include "dsp/kernel_tables.h"
#include "dsp/math_coefficients.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "dsp/math_kernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "dsp/vector_loops-inl.h"

// Operation by operation what scalar_math_kernels.cpp does; the reasons are given there.

HWY_BEFORE_NAMESPACE();
namespace quenlis {
namespace HWY_NAMESPACE {
#if QUENLIS_IS_PLAIN_TARGET

const math_kernels& math_table() {
    return scalar_math_kernels;
}

#else
namespace hn = hwy::HWY_NAMESPACE;
namespace {

using namespace coefficients;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

template <class Tag, class Number, std::size_t Terms, class V>
HWY_INLINE V polynomial(Tag tag, const Number (&series)[Terms], V x) {
    V value = hn::Set(tag, series[Terms - 1]);
    for (std::size_t i = Terms - 1; i-- > 0;)
        value = hn::Add(hn::Mul(value, x), hn::Set(tag, series[i]));
    return value;
}

template <class Tag, class V>
HWY_INLINE V tanh_of(Tag tag, V x) {
    const V one = hn::Set(tag, 1.0F);
    const V size = hn::Abs(x);
    const V z = hn::Mul(size, size);
    const V ratio =
        hn::Div(hn::Mul(size, polynomial(tag, tanh_numerator, z)), polynomial(tag, tanh_denominator, z));
    const V limited = hn::IfThenElse(hn::Gt(ratio, one), one, ratio);
    return hn::CopySign(hn::IfThenElse(hn::Ge(size, hn::Set(tag, tanh_limit)), one, limited), x);
}

template <class Tag, class V>
HWY_INLINE V exp_of(Tag tag, V x) {
    const hn::Rebind<std::uint64_t, Tag> bits_tag;
    const hn::Rebind<std::int64_t, Tag> index_tag;
    const V limit = hn::Set(tag, exp_limit);
    x = hn::IfThenElse(hn::Gt(x, limit), limit, x);
    x = hn::IfThenElse(hn::Lt(x, hn::Neg(limit)), hn::Neg(limit), x);
    const V shift = hn::Set(tag, rounding_shift);
    const V steps = hn::Mul(x, hn::Set(tag, exp_steps_per_unit));
    const V shifted = hn::Add(steps, shift);
    const V f = hn::Sub(steps, hn::Sub(shifted, shift));
    const auto whole = hn::BitCast(bits_tag, shifted);
    const auto step = hn::And(whole, hn::Set(bits_tag, 31));
    const V fraction = hn::GatherIndex(tag, exp_fractions, hn::BitCast(index_tag, step));
    const V power =
        hn::BitCast(tag, hn::Add(hn::BitCast(bits_tag, fraction), hn::ShiftLeft<47>(hn::Sub(whole, step))));
    const V high = hn::Add(hn::Mul(hn::Set(tag, exp_series[2]), f), hn::Set(tag, exp_series[1]));
    const V low = hn::Add(hn::Mul(hn::Set(tag, exp_series[0]), f), hn::Set(tag, 1.0));
    return hn::Mul(hn::Add(hn::Mul(high, hn::Mul(f, f)), low), power);
}

template <class Tag, class V>
HWY_INLINE V log10_of(Tag tag, V x) {
    const hn::Rebind<std::uint32_t, Tag> bits_tag;
    const hn::Rebind<std::int32_t, Tag> number_tag;
    const V one = hn::Set(tag, 1.0F);
    const auto denormal = hn::Lt(x, hn::Set(tag, std::numeric_limits<float>::min()));
    const V scaled = hn::IfThenElse(denormal, hn::Mul(x, hn::Set(tag, 33554432.0F)), x);
    const auto bits = hn::Add(hn::BitCast(bits_tag, scaled), hn::Set(bits_tag, one_f32 - sqrt_half_f32));
    const V exponent = hn::Sub(hn::ConvertTo(tag, hn::BitCast(number_tag, hn::ShiftRight<23>(bits))),
                               hn::IfThenElse(denormal, hn::Set(tag, 152.0F), hn::Set(tag, 127.0F)));
    const V m = hn::BitCast(
        tag, hn::Add(hn::And(bits, hn::Set(bits_tag, mantissa_f32)), hn::Set(bits_tag, sqrt_half_f32)));
    const V s = hn::Div(hn::Sub(m, one), hn::Add(m, one));
    const V value = hn::Add(hn::Mul(exponent, hn::Set(tag, log10_of_2)),
                            hn::Mul(s, polynomial(tag, log10_series, hn::Mul(s, s))));
    const V finite_or_not = hn::IfThenElse(hn::Lt(x, hn::Set(tag, infinity)), value, x);
    const V not_positive =
        hn::IfThenElse(hn::Eq(x, hn::Zero(tag)), hn::Set(tag, -infinity), hn::Set(tag, not_a_number));
    return hn::IfThenElse(hn::Gt(x, hn::Zero(tag)), finite_or_not, not_positive);
}

template <class Tag, class V>
HWY_INLINE V log2_of(Tag tag, V x) {
    const hn::Rebind<std::uint64_t, Tag> bits_tag;
    const V one = hn::Set(tag, 1.0);
    const auto bits = hn::Add(hn::BitCast(bits_tag, x), hn::Set(bits_tag, one_f64 - sqrt_half_f64));
    const V counted = hn::BitCast(tag, hn::Or(hn::ShiftRight<52>(bits), hn::Set(bits_tag, two_to_52_f64)));
    const V exponent = hn::Sub(counted, hn::Set(tag, 4503599627370496.0 + 1023.0));
    const V m = hn::BitCast(
        tag, hn::Add(hn::And(bits, hn::Set(bits_tag, mantissa_f64)), hn::Set(bits_tag, sqrt_half_f64)));
    const V s = hn::Div(hn::Sub(m, one), hn::Add(m, one));
    const V value = hn::Add(exponent, hn::Mul(s, polynomial(tag, log2_series, hn::Mul(s, s))));
    return hn::IfThenElse(hn::Lt(x, hn::Set(tag, double{infinity})), value, x);
}

template <class Tag, class V>
HWY_INLINE V exp2_of(Tag tag, V x) {
    const hn::Rebind<std::uint64_t, Tag> bits_tag;
    const V limit = hn::Set(tag, 200.0);
    const V shift = hn::Set(tag, rounding_shift);
    const V y = larger_of(hn::Neg(limit), smaller_of(limit, x));
    const V shifted = hn::Add(y, shift);
    const V f = hn::Sub(y, hn::Sub(shifted, shift));
    const auto power = hn::Add(hn::ShiftLeft<52>(hn::BitCast(bits_tag, shifted)), hn::Set(bits_tag, one_f64));
    const V mantissa = hn::Add(hn::Set(tag, 1.0), hn::Mul(f, polynomial(tag, exp2_series, f)));
    return hn::Mul(mantissa, hn::BitCast(tag, power));
}

/// Where the lowest bit of a pattern is set.
template <class Tag, class V>
HWY_INLINE auto is_odd(Tag tag, V bits) {
    const hn::Rebind<std::uint64_t, Tag> bits_tag;
    return hn::RebindMask(tag, hn::TestBit(bits, hn::Set(bits_tag, 1)));
}

template <class Tag, class V>
HWY_INLINE V pow_of(Tag tag, V a, V b) {
    const hn::Rebind<std::uint64_t, Tag> bits_tag;
    const V zero = hn::Zero(tag);
    const V one = hn::Set(tag, 1.0);
    const V infinite = hn::Set(tag, double{infinity});
    const V shift = hn::Set(tag, rounding_shift);
    const V size = hn::Abs(a);
    const V logarithm = hn::IfThenElse(hn::Eq(size, zero), hn::Neg(infinite), log2_of(tag, size));
    const V value = exp2_of(tag, hn::Mul(b, logarithm));

    const V shifted = hn::Add(b, shift);
    const auto small = hn::Lt(hn::Abs(b), hn::Set(tag, first_even_only));
    const auto broken = hn::And(small, hn::Ne(hn::Sub(shifted, shift), b));
    const auto odd = hn::AndNot(broken, hn::And(small, is_odd(tag, hn::BitCast(bits_tag, shifted))));
    const V with_sign = hn::IfThenElse(odd, hn::CopySign(value, a), value);
    const auto undefined = hn::And(hn::And(hn::Lt(a, zero), hn::Lt(size, infinite)), broken);
    const auto unit_to_infinity = hn::And(hn::Eq(size, one), hn::Eq(hn::Abs(b), infinite));
    const auto is_one = hn::Or(hn::Or(hn::Eq(b, zero), hn::Eq(a, one)), unit_to_infinity);
    const V defined = hn::IfThenElse(undefined, hn::Set(tag, double{not_a_number}), with_sign);
    return hn::IfThenElse(is_one, one, defined);
}

template <class Tag, class V>
HWY_INLINE V phase_of(Tag tag, V re, V im) {
    const V x = hn::Abs(re);
    const V y = hn::Abs(im);
    const auto steep = hn::Gt(y, x);
    const V smaller = hn::IfThenElse(steep, x, y);
    const V larger = hn::IfThenElse(steep, y, x);
    const V ratio = hn::IfThenElse(hn::Eq(smaller, larger), hn::Set(tag, 1.0), hn::Div(smaller, larger));
    const V t = hn::IfThenElse(hn::Eq(hn::Add(x, y), hn::Zero(tag)), hn::Zero(tag), ratio);
    const V octant = hn::Mul(t, polynomial(tag, atan_series, hn::Mul(t, t)));
    const V quadrant = hn::IfThenElse(steep, hn::Sub(hn::Set(tag, half_pi), octant), octant);
    const auto leftward = hn::Lt(hn::CopySign(hn::Set(tag, 1.0), re), hn::Zero(tag));
    const V angle = hn::IfThenElse(leftward, hn::Sub(hn::Set(tag, pi), quadrant), quadrant);
    return hn::CopySign(angle, im);
}

template <class V>
struct sine_and_cosine {
    V sine;
    V cosine;
};

/// Of angles up to `largest_plain_angle`.
template <class Tag, class V>
HWY_INLINE sine_and_cosine<V> of_angle(Tag tag, V x) {
    const hn::Rebind<std::uint64_t, Tag> bits_tag;
    const V shift = hn::Set(tag, rounding_shift);
    const V shifted = hn::Add(hn::Mul(x, hn::Set(tag, two_over_pi)), shift);
    const V turns = hn::Sub(shifted, shift);
    const V rest = hn::Sub(hn::Sub(x, hn::Mul(turns, hn::Set(tag, half_pi_high))),
                           hn::Mul(turns, hn::Set(tag, half_pi_low)));
    const V z = hn::Mul(rest, rest);
    const V s = hn::Mul(rest, hn::Add(hn::Set(tag, 1.0), hn::Mul(z, polynomial(tag, sine_series, z))));
    const V c = hn::Add(hn::Set(tag, 1.0), hn::Mul(z, polynomial(tag, cosine_series, z)));

    const auto quadrant = hn::BitCast(bits_tag, shifted);
    const auto second_bit = hn::Set(bits_tag, 2);
    const auto swapped = is_odd(tag, quadrant);
    const auto sine_sign = hn::ShiftLeft<62>(hn::And(quadrant, second_bit));
    const auto cosine_sign = hn::ShiftLeft<62>(hn::And(hn::Add(quadrant, hn::Set(bits_tag, 1)), second_bit));
    return {hn::Xor(hn::IfThenElse(swapped, c, s), hn::BitCast(tag, sine_sign)),
            hn::Xor(hn::IfThenElse(swapped, s, c), hn::BitCast(tag, cosine_sign))};
}

void hyperbolic_tangent(const float* a, float* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        hn::StoreU(tanh_of(tag, hn::LoadU(tag, a + i)), tag, d + i);
    });
}

void sigmoid(const float* a, float* d, std::size_t n) {
    for_each_vector<double, 1>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        const auto one = hn::Set(narrow, 1.0F);
        const auto exponent = hn::PromoteTo(tag, hn::Neg(hn::LoadU(narrow, a + i)));
        const auto e = hn::DemoteTo(narrow, exp_of(tag, exponent));
        hn::StoreU(hn::Div(one, hn::Add(one, e)), narrow, d + i);
    });
}

void common_logarithm(const float* a, float* d, std::size_t n) {
    for_each_vector<float, 2>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        hn::StoreU(log10_of(tag, hn::LoadU(tag, a + i)), tag, d + i);
    });
}

void power(const float* a, const float* b, float* d, std::size_t n) {
    for_each_vector<double, 1>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        const auto base = hn::PromoteTo(tag, hn::LoadU(narrow, a + i));
        const auto exponent = hn::PromoteTo(tag, hn::LoadU(narrow, b + i));
        hn::StoreU(hn::DemoteTo(narrow, pow_of(tag, base, exponent)), narrow, d + i);
    });
}

void phase(const complex32f* a, float* d, std::size_t n) {
    for_each_vector<double, 1>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        auto re = hn::Zero(narrow);
        auto im = hn::Zero(narrow);
        hn::LoadInterleaved2(narrow, reinterpret_cast<const float*>(a + i), re, im);
        const auto angle = phase_of(tag, hn::PromoteTo(tag, re), hn::PromoteTo(tag, im));
        hn::StoreU(hn::DemoteTo(narrow, angle), narrow, d + i);
    });
}

void polar_to_cart(const float* mag, const float* angle, complex32f* d, std::size_t n) {
    for_each_vector<double, 1>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        const auto x = hn::LoadU(narrow, angle + i);
        if (!hn::AllTrue(narrow, hn::Le(hn::Abs(x), hn::Set(narrow, largest_plain_angle)))) {
            scalar_math_kernels.polar_to_cart(mag + i, angle + i, d + i, hn::Lanes(tag));
            return;
        }
        const auto unit = of_angle(tag, hn::PromoteTo(tag, x));
        const auto size = hn::PromoteTo(tag, hn::LoadU(narrow, mag + i));
        hn::StoreInterleaved2(hn::DemoteTo(narrow, hn::Mul(size, unit.cosine)),
                              hn::DemoteTo(narrow, hn::Mul(size, unit.sine)), narrow,
                              reinterpret_cast<float*>(d + i));
    });
}

void multiply_by_hann_window(float* x, std::size_t n) {
    const auto last = static_cast<double>(n - 1);
    const double step = 2.0 * pi / last;
    for_each_vector<double, 1>(n, [=](auto tag, std::size_t i) HWY_ATTR {
        const hn::Rebind<float, decltype(tag)> narrow;
        const auto index = hn::Iota(tag, static_cast<double>(i));
        const auto distance = smaller_of(index, hn::Sub(hn::Set(tag, last), index));
        const auto cosine = of_angle(tag, hn::Mul(hn::Set(tag, step), distance)).cosine;
        const auto half = hn::Set(tag, 0.5);
        const auto weight = hn::DemoteTo(narrow, hn::Sub(half, hn::Mul(half, cosine)));
        hn::StoreU(hn::Mul(hn::LoadU(narrow, x + i), weight), narrow, x + i);
    });
}

} // namespace

const math_kernels& math_table() {
    static constexpr math_kernels table = {
        hyperbolic_tangent, sigmoid, common_logarithm, power, phase, polar_to_cart, multiply_by_hann_window,
    };
    return table;
}

#endif
} // namespace HWY_NAMESPACE
} // namespace quenlis
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quenlis {
HWY_EXPORT(math_table);

const math_kernels& math_kernels_of(std::int64_t target) {
    return kernels_of(HWY_DISPATCH_TABLE(math_table), target);
}
} // namespace quenlis
#endif
