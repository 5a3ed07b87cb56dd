#include "evaluation.h"

#include <algorithm>
#include <cmath>

namespace {

template <typename Taps>
spectrum spectrum_of(const Taps& taps) {
    return to_frequency({taps.begin(), taps.end()});
}

int bin_at(double frequency) {
    return static_cast<int>(std::ceil(frequency / bin_frequency(1)));
}

double energy_dB(double ratio) {
    return 10.0 * std::log10(ratio);
}

} // namespace

row_evaluation::row_evaluation(const filter_row& row)
    : same_(spectrum_of(row.same)), cross_(spectrum_of(row.cross)) {}

row_evaluation::ear_energies row_evaluation::heard(const ear_responses& ears, int bin) const {
    return {std::norm(ears.near[bin] * same_[bin] + ears.far[bin] * cross_[bin]),
            std::norm(ears.near[bin] * cross_[bin] + ears.far[bin] * same_[bin])};
}

double row_evaluation::separation(const ear_responses& ears, double from, double to) const {
    ear_energies sum = {0.0, 0.0};
    for (int bin = bin_at(from); bin < bin_at(to); bin++) {
        const ear_energies at_bin = heard(ears, bin);
        sum.own += at_bin.own;
        sum.other += at_bin.other;
    }
    return energy_dB(sum.own / sum.other);
}

double row_evaluation::least_separation(const ear_responses& ears, double from, double to) const {
    const ear_energies first = heard(ears, bin_at(from));
    double least = first.own / first.other;
    for (int bin = bin_at(from) + 1; bin < bin_at(to); bin++) {
        const ear_energies at_bin = heard(ears, bin);
        least = std::min(least, at_bin.own / at_bin.other);
    }
    return energy_dB(least);
}

row_evaluation::peak row_evaluation::largest_boost() const {
    double largest = 0.0;
    int largest_bin = 0;
    for (int bin = 0; bin < grid_bins; bin++) {
        // Equal or opposite inputs are the worst case.
        const double gain =
            std::max(std::norm(same_[bin] + cross_[bin]), std::norm(same_[bin] - cross_[bin]));
        if (gain > largest) {
            largest = gain;
            largest_bin = bin;
        }
    }
    return {energy_dB(largest), bin_frequency(largest_bin)};
}
