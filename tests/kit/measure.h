/// Measurements of signals.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace test_kit {

/// The largest magnitude; NaN when a sample is NaN, 0 for no samples.
float peak(const std::vector<float>& x);

/// The root mean square in dB of full scale 1.0; minus infinity for silence.
double level_db(const std::vector<float>& x);

/// The amplitude of a sine of `hz` in `x`, found through a Hann window. Use at least ten periods.
double amplitude_at(const std::vector<float>& x, double hz, double rate = 48000.0);

/// How much louder `hz` is in `out` than in `in`, in dB.
double gain_db_at(const std::vector<float>& in, const std::vector<float>& out, double hz,
                  double rate = 48000.0);

/// By how many frames `delayed` comes after `reference`, from 0 to `longest`, whatever its gain and sign: the
/// lag of the strongest correlation. Nothing when either is silent.
std::optional<std::size_t> find_delay(const std::vector<float>& reference, const std::vector<float>& delayed,
                                      std::size_t longest);

} // namespace test_kit
