#include "cancellation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace {

using complex = std::complex<double>;

constexpr double delay_frames = 977.0;

// The sum of the squared taps of both filters. Being the same in every row, it makes all angles equally loud
// in the loudspeakers, and the boost at narrow angles costs level rather than headroom.
constexpr double row_energy = 0.37;

struct regularisation_knot {
    double frequency;
    double beta;
};

// No input is boosted by more than 1 / (2 sqrt(beta)) before the row's energy is set: 19 dB at 200 Hz, where
// cancelling is costly, 12 dB at 400 Hz, then slowly more again, as it gets cheaper, and from 8 kHz on ever
// less, since there no two heads are alike.
constexpr regularisation_knot regularisation[] = {{0.0, 0.005},    {200.0, 0.0028}, {400.0, 0.016},
                                                  {8000.0, 0.008}, {9500.0, 0.25},  {20000.0, 1.0},
                                                  {24000.0, 1.0}};

double regularisation_at(double frequency) {
    const auto* upper = std::find_if(std::begin(regularisation) + 1, std::end(regularisation) - 1,
                                     [=](const auto& knot) { return frequency <= knot.frequency; });
    const auto* lower = upper - 1;
    const double along = (frequency - lower->frequency) / (upper->frequency - lower->frequency);
    return lower->beta + along * (upper->beta - lower->beta);
}

// O. Kirkeby, P. A. Nelson, H. Hamada and F. Orduna-Bustamante, "Fast deconvolution of multichannel systems
// using regularization", IEEE Trans. Speech Audio Process. 6(2), 1998.
complex regularised_inverse(const complex& value, double beta) {
    return std::conj(value) / (std::norm(value) + beta);
}

double energy(const std::vector<double>& response) {
    double sum = 0.0;
    for (int tap = 0; tap < row_taps; tap++)
        sum += response[tap] * response[tap];
    return sum;
}

std::array<float, row_taps> scaled_taps(const std::vector<double>& response, double scale) {
    std::array<float, row_taps> taps{};
    std::transform(response.begin(), response.begin() + row_taps, taps.begin(),
                   [scale](double value) { return static_cast<float>(scale * value); });
    return taps;
}

} // namespace

filter_row cancel_crosstalk(const ear_responses& ears) {
    spectrum same(grid_bins);
    spectrum cross(grid_bins);
    for (int bin = 0; bin < grid_bins; bin++) {
        const double frequency = bin_frequency(bin);
        const double beta = regularisation_at(frequency);
        // Equal and opposite inputs are the two modes of a symmetric pair: each meets one number to invert.
        const complex leak = ears.far[bin] * std::conj(ears.near[bin]) / std::norm(ears.near[bin]);
        const complex equal = regularised_inverse(1.0 + leak, beta);
        const complex opposite = regularised_inverse(1.0 - leak, beta);
        const complex delay = phasor(-frequency / sample_rate * delay_frames);
        same[bin] = 0.5 * (equal + opposite) * delay;
        cross[bin] = 0.5 * (equal - opposite) * delay;
    }
    const std::vector<double> same_response = to_time(same);
    const std::vector<double> cross_response = to_time(cross);
    const double scale = std::sqrt(row_energy / (energy(same_response) + energy(cross_response)));
    return {scaled_taps(same_response, scale), scaled_taps(cross_response, scale)};
}
