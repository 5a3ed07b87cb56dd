#pragma once

#include <cstdint>

/// The samples that the host gives to the engine and takes from it; chooses among its three call families.
enum class sample_type { int16, float32, float64 };

/// A sample of full scale 1.0 as 16 bits: rounded and clamped; a NaN becomes 0.
std::int16_t to_int16(float sample);

/// A 16-bit sample at full scale 1.0, exactly: to_int16 gives it back.
inline float from_int16(std::int16_t sample) {
    return static_cast<float>(sample) / 32768.0F;
}
