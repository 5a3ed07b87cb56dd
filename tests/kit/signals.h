/// Test signals and measurements of signals. The same arguments give the same samples on every machine and with every standard library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace test_kit {

/// White noise, uniform from -amplitude to amplitude.
std::vector<float> noise(std::size_t frames, std::uint32_t seed, float amplitude = 1.0F);

/// A sine that starts at phase 0.
std::vector<float> sine(std::size_t frames, double hz, float amplitude = 1.0F, double rate = 48000.0);

/// Zeros with one sample of `amplitude`. @param at  its index, below `frames`
std::vector<float> impulse(std::size_t frames, std::size_t at = 0, float amplitude = 1.0F);

/// Four syllables a second of a gliding voice with hissing onsets, and a pause after each third syllable. The
/// pitch wanders around 90 to 210 Hz, as `seed` picks; the peak is 0.5.
std::vector<float> speech_like(std::size_t frames, std::uint32_t seed, double rate = 48000.0);

/// Words that were never said.
struct spoken_words {
    std::vector<float> samples;
    std::vector<double> pitch; // Hz, in the middle of each 480 samples; 0 where no voice sounds
};

/// Words of three syllables with pauses between them, at 48 kHz: a glottal pulse through the formants of vowels that
/// glide into each other, and a fricative at the onset of every other syllable. Near enough to speech for what was trained on
/// speech. The pitch moves within 15% of `hz`; the peak is 0.3.
spoken_words words(std::size_t frames, double hz, std::uint32_t seed);

/// A planar stereo block: all of `left`, then all of `right`.
std::vector<float> planar(const std::vector<float>& left, const std::vector<float>& right);

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
