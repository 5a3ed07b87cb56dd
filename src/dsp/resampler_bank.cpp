#include "dsp/resampler_bank.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double roll_off = 0.95; // of the Nyquist frequency of the lower rate
constexpr double kaiser_beta = 9.0;
constexpr double smallest_term = 1e-21; // of the sum, where the series of the window ends

/// Where the series below is taken at the window's centre: half of the Kaiser parameter, squared.
constexpr double centre_argument = kaiser_beta * kaiser_beta / 4.0;

/// The modified Bessel function of order zero as a power series in (x / 2) squared.
std::vector<double> bessel_series() {
    std::vector<double> coefficients;
    double coefficient = 1.0;
    double term = 1.0;
    double sum = 0.0;
    for (int i = 1; term >= smallest_term * sum; ++i) {
        coefficients.push_back(coefficient);
        sum += term;
        coefficient /= static_cast<double>(i) * i;
        term *= centre_argument / (static_cast<double>(i) * i);
    }
    return coefficients;
}

/// Multiplies by one half of a Kaiser window, from its centre, where it is 1, outwards.
void multiply_by_half_window(std::vector<double>& values) {
    constexpr std::size_t group = 8; // side by side, since one alone would wait for itself at every step
    const std::vector<double> series = bessel_series();
    const auto end = static_cast<double>(values.size() - 1);
    double at_centre = 0.0;
    for (std::size_t first = 0; first < values.size(); first += group) {
        double argument[group];
        double sum[group] = {};
        for (std::size_t i = 0; i < group; ++i) {
            const double share = static_cast<double>(first + i) / end;
            argument[i] = centre_argument * (1.0 - share * share);
        }
        for (auto coefficient = series.rbegin(); coefficient != series.rend(); ++coefficient)
            for (std::size_t i = 0; i < group; ++i)
                sum[i] = sum[i] * argument[i] + *coefficient;
        if (first == 0)
            at_centre = sum[0];
        for (std::size_t i = 0; i < std::min(group, values.size() - first); ++i)
            values[first + i] *= sum[i] / at_centre;
    }
}

/// One half of a sinc, from its centre outwards: `phases` values for each input sample.
/// @param cut_off  of the lower rate's Nyquist frequency over the input's
std::vector<double> half_sinc(std::size_t phases, double cut_off) {
    const double angle = pi * roll_off * cut_off; // of one input sample
    std::vector<double> sine(phases);
    std::vector<double> cosine(phases);
    for (std::size_t phase = 0; phase < phases; ++phase) {
        const double fraction = static_cast<double>(phase) / static_cast<double>(phases);
        sine[phase] = std::sin(angle * fraction);
        cosine[phase] = std::cos(angle * fraction);
    }
    std::vector<double> values;
    values.reserve((resampler_bank::history + 1) * phases);
    for (int sample = 0; sample <= resampler_bank::history; ++sample) {
        const double sample_sine = std::sin(angle * sample);
        const double sample_cosine = std::cos(angle * sample);
        for (std::size_t phase = 0; phase < phases; ++phase) {
            const double x = sample + static_cast<double>(phase) / static_cast<double>(phases);
            const double sine_of_x = sample_sine * cosine[phase] + sample_cosine * sine[phase];
            values.push_back(x > 0.0 ? sine_of_x / (pi * x * cut_off) : roll_off);
        }
    }
    values.resize(resampler_bank::history * phases + 1);
    return values;
}

/// Makes the values that lie one sample of the lower rate apart sum to 1, on the mean of all such sets.
void normalise(std::vector<double>& half, int sets) {
    const double both_sides = half[0] + 2.0 * std::accumulate(half.begin() + 1, half.end(), 0.0);
    for (double& value : half)
        value *= sets / both_sides;
}

} // namespace

resampler_bank::resampler_bank(int input_rate, int output_rate)
    : input_period_(input_rate / std::gcd(input_rate, output_rate)),
      output_period_(output_rate / std::gcd(input_rate, output_rate)),
      rows_(static_cast<std::size_t>(output_period_)) {
    fill_rows();
    find_runs();
}

void resampler_bank::fill_rows() {
    const double cut_off = std::min(1.0, static_cast<double>(output_period_) / input_period_);
    std::vector<double> half = half_sinc(rows_.size(), cut_off);
    multiply_by_half_window(half);
    normalise(half, std::max(input_period_, output_period_));
    int phase = 0;
    for (row& filter : rows_) {
        for (int tap = 0; tap < static_cast<int>(resampler_taps); ++tap) {
            const int distance = std::abs(phase - (tap + 1 - history) * output_period_);
            filter.taps[tap] = static_cast<float>(half[static_cast<std::size_t>(distance)]);
        }
        phase = (phase + input_period_) % output_period_;
    }
    outermost_tap_ = static_cast<float>(half.back());
}

void resampler_bank::find_runs() {
    int position = 0;
    int phase = 0;
    for (std::size_t output = 0; output < rows_.size(); ++output) {
        if (runs_.empty() || runs_.back().position != position)
            runs_.push_back({output, 0, position});
        ++runs_.back().rows;
        phase += input_period_;
        position += phase / output_period_;
        phase %= output_period_;
    }
}
