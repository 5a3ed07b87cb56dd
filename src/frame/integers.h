/// 32-bit arithmetic that is defined for every operand: integers wrap, fractions saturate.
#pragma once

#include <cstdint>
#include <limits>

inline int32_t wrapping_add(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t wrapping_subtract(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

inline int32_t wrapping_multiply(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

/// Cuts towards zero. Values beyond 32 bits go to the nearest end of the range, a NaN to 0.
inline int32_t saturating_truncate(double value) {
    if (value != value)
        return 0;
    if (value >= 2147483647.0)
        return std::numeric_limits<int32_t>::max();
    if (value <= -2147483648.0)
        return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}
