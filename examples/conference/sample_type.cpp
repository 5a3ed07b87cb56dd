#include "sample_type.h"

#include <algorithm>
#include <cmath>

std::int16_t to_int16(float sample) {
    if (std::isnan(sample))
        return 0;
    const float scaled = std::clamp(sample * 32768.0F, -32768.0F, 32767.0F);
    return static_cast<std::int16_t>(std::lrint(scaled));
}
