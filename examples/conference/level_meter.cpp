#include "level_meter.h"

#include <cmath>
#include <limits>

void level_meter::add(const std::vector<float>& block, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const double magnitude = std::fabs(block[i]);
        energy_ += magnitude * magnitude;
        peak_ = magnitude > peak_ ? magnitude : peak_;
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
