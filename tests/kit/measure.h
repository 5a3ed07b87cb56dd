/// Measurements of signals.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace test_kit {

/// The largest magnitude; 0 for no samples.
float peak(const std::vector<float>& x);

/// How much louder `hz` is in `out` than in `in`, in dB, seen through a Hann window. Use at least ten periods.
double gain_db_at(const std::vector<float>& in, const std::vector<float>& out, double hz,
                  double rate = 48000.0);

/// By how many frames `delayed` comes after `reference`, from 0 to `longest`, whatever its gain and sign: the
/// lag of the strongest correlation. Nothing when either is silent.
std::optional<std::size_t> find_delay(const std::vector<float>& reference, const std::vector<float>& delayed,
                                      std::size_t longest);

} // namespace test_kit
