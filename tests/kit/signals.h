/// Test signals and measurements of signals. The same arguments give the same samples on every machine and with every standard library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace test_kit {

using samples = std::vector<float>;

/// White noise, uniform from -amplitude to amplitude.
samples noise(std::size_t frames, std::uint32_t seed, float amplitude = 1.0F);

/// A sine that starts at phase 0.
samples sine(std::size_t frames, double hz, float amplitude = 1.0F, double rate = 48000.0);

/// A planar stereo block: all of `left`, then all of `right`.
samples planar(const samples& left, const samples& right);

/// The samples from `from` on, up to and without `to`.
samples part(const samples& x, std::size_t from, std::size_t to);

/// The largest magnitude; 0 for no samples.
float peak(const samples& x);

/// How much louder `hz` is in `out` than in `in`, in dB, seen through a Hann window. Use at least ten periods.
double gain_db_at(const samples& in, const samples& out, double hz, double rate = 48000.0);

/// By how many frames `delayed` comes after `reference`, from 0 to `longest`, whatever its gain and sign: the
/// lag of the strongest correlation. Nothing when either is silent.
std::optional<std::size_t> find_delay(const samples& reference, const samples& delayed, std::size_t longest);

} // namespace test_kit
