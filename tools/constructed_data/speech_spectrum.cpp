#include "data_sets.h"
#include "table_file.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace {

constexpr std::size_t bins = 1024;

struct point {
    double bin;   // of a 2048-point transform at 48 kHz, so times 23.4375 Hz
    double level; // dB
};

// The long-term average spectrum of speech that the equaliser aims at. It is lowest just below half the sample rate.
constexpr std::array<point, 12> points = {{{0, -42.48},
                                           {2, -29.44},
                                           {5, -23.84},
                                           {21, -29.75},
                                           {42, -36.32},
                                           {85, -45.47},
                                           {170, -52.59},
                                           {340, -54.79},
                                           {512, -62.02},
                                           {768, -72.46},
                                           {1015, -78.94},
                                           {1023, -78.90}}};

/// A logarithmic frequency axis that has a place for bin 0.
double axis(double bin) {
    return std::log2(bin + 1.0);
}

/// Slopes that keep a cubic Hermite curve between its points (F. N. Fritsch and J. Butland, "A method for constructing
/// local monotone piecewise cubic interpolants", 1984): the weighted harmonic mean of the neighbouring secants, flat at
/// turning points.
std::array<double, points.size()> monotone_slopes() {
    std::array<double, points.size()> slopes{};
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const double h0 = axis(points[i].bin) - axis(points[i - 1].bin);
        const double h1 = axis(points[i + 1].bin) - axis(points[i].bin);
        const double s0 = (points[i].level - points[i - 1].level) / h0;
        const double s1 = (points[i + 1].level - points[i].level) / h1;
        if (s0 * s1 > 0.0)
            slopes[i] = 3.0 * (h0 + h1) / ((2.0 * h1 + h0) / s0 + (h1 + 2.0 * h0) / s1);
    }
    return slopes;
}

double level_at(double bin, const std::array<double, points.size()>& slopes) {
    std::size_t i = 0;
    while (i + 2 < points.size() && points[i + 1].bin <= bin)
        ++i;
    const double h = axis(points[i + 1].bin) - axis(points[i].bin);
    const double t = (axis(bin) - axis(points[i].bin)) / h;
    const double rest = 1.0 - t;
    return points[i].level * rest * rest * (1.0 + 2.0 * t) + points[i + 1].level * t * t * (3.0 - 2.0 * t) +
           h * t * rest * (slopes[i] * rest - slopes[i + 1] * t);
}

} // namespace

void write_speech_spectrum(const std::filesystem::path& data) {
    const auto slopes = monotone_slopes();
    std::vector<float> levels;
    for (std::size_t bin = 0; bin < bins; ++bin)
        levels.push_back(static_cast<float>(level_at(static_cast<double>(bin), slopes)));
    write_table_file(data / "auto_eq" / "target_values.f32", levels);
}
