#include "kit/measure.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace test_kit {
namespace {

constexpr double pi = 3.14159265358979323846;

double strength_at(const std::vector<float>& x, double hz, double rate) {
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const auto time = static_cast<double>(i);
        const double window = 0.5 - 0.5 * std::cos(2.0 * pi * (time + 0.5) / static_cast<double>(x.size()));
        sum += window * static_cast<double>(x[i]) * std::polar(1.0, -2.0 * pi * hz * time / rate);
    }
    return std::abs(sum) / static_cast<double>(x.size());
}

/// Largest at the true lag: no shift of a signal correlates with it more than the signal itself.
double correlation(const std::vector<float>& reference, const std::vector<float>& delayed, std::size_t lag) {
    double sum = 0.0;
    for (std::size_t i = 0; i < reference.size() && lag + i < delayed.size(); ++i)
        sum += static_cast<double>(reference[i]) * static_cast<double>(delayed[lag + i]);
    return std::abs(sum);
}

} // namespace

float peak(const std::vector<float>& x) {
    float highest = 0.0F;
    for (const float value : x)
        highest = std::max(highest, std::abs(value));
    return highest;
}

double gain_db_at(const std::vector<float>& in, const std::vector<float>& out, double hz, double rate) {
    return 20.0 * std::log10(strength_at(out, hz, rate) / strength_at(in, hz, rate));
}

std::optional<std::size_t> find_delay(const std::vector<float>& reference, const std::vector<float>& delayed,
                                      std::size_t longest) {
    std::optional<std::size_t> best;
    double strongest = 0.0;
    for (std::size_t lag = 0; lag <= longest; ++lag) {
        const double now = correlation(reference, delayed, lag);
        if (now > strongest)
            best = lag;
        strongest = std::max(strongest, now);
    }
    return best;
}

} // namespace test_kit
