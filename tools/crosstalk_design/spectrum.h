#pragma once

#include <complex>
#include <vector>

/// One side of the spectrum of a real response, bins 0 to `length` / 2.
using spectrum = std::vector<std::complex<double>>;

constexpr double sample_rate = 48000.0;

/// Frames of the grid on which filters are designed: four times the filters' length, so that what wraps around
/// has died away.
constexpr int grid_frames = 8192;
constexpr int grid_bins = grid_frames / 2 + 1;

constexpr double bin_frequency(int bin) {
    return bin * sample_rate / grid_frames;
}

/// exp(2 pi i `turns`). In additions and multiplications alone, so that every machine gives the same bits.
std::complex<double> phasor(double turns);

/// The `grid_frames` values of the real response with these `grid_bins` bins; the imaginary parts of the first
/// and the last bin are dropped.
std::vector<double> to_time(const spectrum& half);

/// The `grid_bins` bins of a real response of at most `grid_frames` values.
spectrum to_frequency(const std::vector<double>& response);
