#pragma once

#include <cstdint>

// What the scalar and the vectorised mathematical functions share. The polynomials are minimax fits (Remez
// exchange) of the textbook series, made for the ranges and with the relative errors given.

namespace coefficients {

/// log10(m) = s (L0 + L1 z + L2 z^2 + L3 z^3), s = (m - 1) / (m + 1), z = s^2, m from sqrt(1/2) to sqrt(2);
/// 7e-10.
constexpr float log10_series[] = {0.868588963207808F, 0.289530302932999F, 0.173608328585295F,
                                  0.129965449630907F};
constexpr float log10_of_2 = 0.301029995663981F;

/// log2(m), in the same way; 5e-12.
constexpr double log2_series[] = {2.8853900817900800, 0.96179667335016931, 0.57708358325946949,
                                  0.41167282712503125, 0.34072800815412137};

/// 2^f = 1 + f (E0 + E1 f + ...), f from -1/2 to 1/2; 3e-9.
constexpr double exp2_series[] = {0.69314721496853902,   0.24022652782516023,   0.055503105504176697,
                                  0.0096176930172179069, 0.0013406644050838482, 0.00015594665841809763};

/// exp(x) = 2^(k / 32) 2^(f / 32), k whole, f from -1/2 to 1/2. What f gives is 1 + f (N0 + N1 f + N2 f^2); together
/// they round to the float that the C library's expf gives.
constexpr double exp_steps_per_unit = 0x1.71547652b82fep+5; // 32 / ln 2
constexpr double exp_series[] = {0x1.62e42ff0c52d6p-6, 0x1.ebfce50fac4f3p-13, 0x1.c6af84b912394p-20};
constexpr double exp_limit = 104.0; // the floats end before
/// 2^(i / 32)
constexpr double exp_fractions[] = {
    0x1.0000000000000p+0, 0x1.059b0d3158574p+0, 0x1.0b5586cf9890fp+0, 0x1.11301d0125b51p+0,
    0x1.172b83c7d517bp+0, 0x1.1d4873168b9aap+0, 0x1.2387a6e756238p+0, 0x1.29e9df51fdee1p+0,
    0x1.306fe0a31b715p+0, 0x1.371a7373aa9cbp+0, 0x1.3dea64c123422p+0, 0x1.44e086061892dp+0,
    0x1.4bfdad5362a27p+0, 0x1.5342b569d4f82p+0, 0x1.5ab07dd485429p+0, 0x1.6247eb03a5585p+0,
    0x1.6a09e667f3bcdp+0, 0x1.71f75e8ec5f74p+0, 0x1.7a11473eb0187p+0, 0x1.82589994cce13p+0,
    0x1.8ace5422aa0dbp+0, 0x1.93737b0cdc5e5p+0, 0x1.9c49182a3f090p+0, 0x1.a5503b23e255dp+0,
    0x1.ae89f995ad3adp+0, 0x1.b7f76f2fb5e47p+0, 0x1.c199bdd85529cp+0, 0x1.cb720dcef9069p+0,
    0x1.d5818dcfba487p+0, 0x1.dfc97337b9b5fp+0, 0x1.ea4afa2a490dap+0, 0x1.f50765b6e4540p+0};

/// tanh(x) = x P(x^2) / Q(x^2), x from 0 to 9.0109; 3e-8.
constexpr float tanh_numerator[] = {1.0F, 0.133832768714F, 0.00349815908154F, 2.06474166277e-5F,
                                    1.34004729887e-8F};
constexpr float tanh_denominator[] = {1.0F, 0.467165982273F, 0.0258870263181F, 0.000328966656896F,
                                      7.79684640215e-7F};
/// Where the hyperbolic tangent rounds to 1.
constexpr float tanh_limit = 9.0109F;

/// atan(t) = t (A0 + A1 z + ...), z = t^2, t from 0 to 1; 4e-10.
constexpr double atan_series[] = {0.99999999962826286,    -0.33333323934760131,  0.19999604622296298,
                                  -0.14279159490400246,   0.11054500511875626,   -0.087987702018189354,
                                  0.067161049119705047,   -0.044357477628457183, 0.022274353456923036,
                                  -0.0071993886107035355, 0.0010911126517536436};

/// sin(r) = r (1 + z (S0 + S1 z + S2 z^2)) and cos(r) = 1 + z (C0 + ... + C3 z^3), z = r^2, r from -pi/4 to
/// pi/4; 4e-9 and 7e-11.
constexpr double sine_series[] = {-0.16666654609583154, 0.0083321607640181168, -0.00019515283430243284};
constexpr double cosine_series[] = {-0.49999999694476837, 0.041666620357163208, -0.0013886681648004627,
                                    2.4383567278014316e-5};

constexpr double pi = 3.14159265358979324;
constexpr double half_pi = 1.57079632679489662;
constexpr double two_over_pi = 0.636619772367581343;
/// Half pi in two parts. The first has 33 bits, so that its product with a quadrant number is exact.
constexpr double half_pi_high = 0x1.921fb544p+0;
constexpr double half_pi_low = 0x1.0b4611a626331p-34;
/// Up to here the two parts reduce an angle to its quadrant.
constexpr float largest_plain_angle = 1.0e6F;

/// Adding 1.5 * 2^52 leaves the nearest whole number in the low bits of a double.
constexpr double rounding_shift = 6755399441055744.0;

/// From 2 to the power 24 on every float is an even number.
constexpr double first_even_only = 16777216.0;

/// Bit patterns.
constexpr std::uint32_t one_f32 = 0x3F800000U;
constexpr std::uint32_t sqrt_half_f32 = 0x3F3504F3U;
constexpr std::uint32_t mantissa_f32 = 0x007FFFFFU;
constexpr std::uint64_t one_f64 = 0x3FF0000000000000U;
constexpr std::uint64_t sqrt_half_f64 = 0x3FE6A09E667F3BCDU;
constexpr std::uint64_t mantissa_f64 = 0x000FFFFFFFFFFFFFU;
constexpr std::uint64_t two_to_52_f64 = 0x4330000000000000U;

} // namespace coefficients
