#include "level_meter.h"

#include <cmath>
#include <limits>

void level_meter::add(const std::vector<float>& block, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const double sample = block[i];
        energy_ += sample * sample;
        peak_ = std::fmax(peak_, std::fabs(sample));
    }
    samples_ += static_cast<double>(count);
}

double level_meter::rms_dbfs() const {
    if (samples_ == 0)
        return -std::numeric_limits<double>::infinity();
    return 10 * std::log10(energy_ / samples_);
}

double level_meter::peak_dbfs() const {
    return 20 * std::log10(peak_);
}
