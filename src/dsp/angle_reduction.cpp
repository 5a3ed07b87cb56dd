#include "dsp/angle_reduction.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "dsp/math_coefficients.h"

namespace {

// 2 / pi in binary, behind 32 zeros; as far as the largest float needs it.
constexpr std::uint32_t two_over_pi_bits[] = {0,           0xA2F9836EU, 0x4E441529U, 0xFC2757D1U,
                                              0xF534DDC0U, 0xDB629599U, 0x3C439041U, 0xFE5163ABU};

std::uint64_t word_at(unsigned bit) {
    const std::size_t index = bit / 32;
    const std::uint64_t pair = (std::uint64_t{two_over_pi_bits[index]} << 32) | two_over_pi_bits[index + 1];
    return (pair >> (32 - bit % 32)) & 0xFFFFFFFFU;
}

/// The quadrants in an angle of `mantissa * 2^exponent`, modulo 4, with 62 bits behind the point: the long
/// product with 2 / pi, without what adds up to whole turns (Payne and Hanek's method).
std::uint64_t quadrants(std::uint64_t mantissa, int exponent) {
    const auto first_bit = static_cast<unsigned>(exponent + 30);
    return ((mantissa * word_at(first_bit)) << 32) + mantissa * word_at(first_bit + 32) +
           ((mantissa * word_at(first_bit + 64)) >> 32);
}

} // namespace

reduced_angle reduce_large_angle(float angle) {
    if (!std::isfinite(angle))
        return {std::numeric_limits<double>::quiet_NaN(), 0};
    int exponent = 0;
    const float fraction = std::frexp(std::fabs(angle), &exponent);
    const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, 24));
    const std::uint64_t turned = quadrants(mantissa, exponent - 24);
    const std::uint64_t nearest = (turned + (std::uint64_t{1} << 61)) >> 62;
    const auto distance = static_cast<std::int64_t>(turned - (nearest << 62));
    const double rest = std::ldexp(static_cast<double>(distance), -62) * coefficients::half_pi;
    const auto quadrant = static_cast<unsigned>(nearest);
    return angle < 0.0F ? reduced_angle{-rest, 4U - quadrant} : reduced_angle{rest, quadrant};
}
