/// Test signals and measurements of signals. The same arguments give the same samples on every machine and with every standard library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

namespace test_kit {

using samples = std::vector<float>;

/// The next number from -1 to 1. The library's own distributions differ between standard libraries.
double uniform(std::mt19937& random);

/// White noise, uniform from -amplitude to amplitude.
samples noise(std::size_t frames, std::uint32_t seed, float amplitude = 1.0F);

/// A sine that starts at phase 0.
samples sine(std::size_t frames, double hz, float amplitude = 1.0F, double rate = 48000.0);

/// A planar stereo block: all of `left`, then all of `right`.
samples planar(const samples& left, const samples& right);

/// The samples from `from` on, up to and without `to`.
samples part(const samples& x, std::size_t from, std::size_t to);

/// Both together, sample by sample, for the length of `x`.
samples sum(samples x, const samples& y);

samples scaled(samples x, float gain);

/// The largest magnitude; 0 for no samples.
float peak(const samples& x);

/// The mean of the squares.
double power(const samples& x);

/// How much louder `hz` is in `out` than in `in`, in dB, seen through a Hann window. Use at least ten periods.
double gain_db_at(const samples& in, const samples& out, double hz, double rate = 48000.0);

/// By how many frames `delayed` comes after `reference`, from 0 to `longest`, whatever its gain and sign: the
/// lag of the strongest correlation. Nothing when either is silent.
std::optional<std::size_t> find_delay(const samples& reference, const samples& delayed, std::size_t longest);

} // namespace test_kit
