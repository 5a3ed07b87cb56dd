// What the shipped data sets do to synthesised words and noise: well under what they reach on recordings, so that a
// broken table or a set in another's place is found.
#include "kit/words.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/rnn.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace test_kit;

constexpr double least_gain = 2.0;              // dB, of SI-SDR at 5 dB SNR
constexpr double least_attenuation = 25.0;      // dB, of noise alone
constexpr double largest_change_of_level = 5.0; // dB, of clean words
constexpr double least_quality = 3.5;           // dB, SI-SDR of clean words
constexpr double least_voiced = 0.8;            // share of voiced frames at 10 dB SNR that count as voice
constexpr double least_unvoiced = 0.8;          // share of frames of noise alone that count as none
constexpr double least_pitch = 0.8; // share of voiced frames at 10 dB SNR within 5% of their pitch

constexpr std::size_t frame = 480;
constexpr std::size_t second = 48000;
constexpr std::size_t latency = 960;
constexpr std::size_t length = 6 * second;

double power(const samples& x, std::size_t from = 0) {
    double sum = 0.0;
    for (std::size_t i = from; i < x.size(); ++i)
        sum += static_cast<double>(x[i]) * static_cast<double>(x[i]);
    return sum / static_cast<double>(x.size() - from);
}

double decibels(double power_ratio) {
    return 10.0 * std::log10(power_ratio);
}

/// Scale-invariant signal to distortion ratio in dB.
double si_sdr(const samples& reference, const samples& estimate) {
    double product = 0.0;
    for (std::size_t i = 0; i < reference.size(); ++i)
        product += static_cast<double>(reference[i]) * static_cast<double>(estimate[i]);
    const double energy = power(reference) * static_cast<double>(reference.size());
    const double target = product * product / energy;
    return decibels(target / (power(estimate) * static_cast<double>(estimate.size()) - target));
}

/// The sound of a fan: what is left of white noise above each octave falls by 6 dB.
samples fan(double wanted_power, std::uint32_t seed) {
    samples x = noise(length, seed);
    float low = 0.0F;
    for (float& sample : x)
        sample = low += 0.05F * (sample - low);
    const auto gain = static_cast<float>(std::sqrt(wanted_power / power(x)));
    for (float& sample : x)
        sample *= gain;
    return x;
}

samples mixed(const samples& voice, double snr_db) {
    samples x = fan(power(voice) * std::pow(10.0, -snr_db / 10.0), 5);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] += voice[i];
    return x;
}

struct outcome {
    samples cleaned; // in step with the input
    std::vector<float> voice;
    std::vector<int> pitch; // both of the input's frames
};

/// A talker's road with noise cancellation on.
outcome clean(samples x) {
    quenlis_anc canceller(48000, 1, frame);
    quenlis_rnn denoiser(frame, 1);
    outcome result;
    x.resize(x.size() + latency);
    for (std::size_t start = 0; start < x.size(); start += frame) {
        canceller.process(&x[start], &x[start]);
        const float voice = denoiser.process(&x[start], &x[start]);
        if (start >= frame) { // the canceller is a frame late
            result.voice.push_back(voice);
            result.pitch.push_back(denoiser.get_pitch());
        }
    }
    result.cleaned.assign(x.begin() + latency, x.end());
    return result;
}

/// For what share of the frames with a pitch something holds.
template <class Condition>
double share_of_voiced(const spoken_words& said, Condition holds) {
    double voiced = 0.0;
    double hits = 0.0;
    for (std::size_t i = 0; i < said.pitch.size(); ++i) {
        voiced += said.pitch[i] > 0.0 ? 1.0 : 0.0;
        hits += said.pitch[i] > 0.0 && holds(i) ? 1.0 : 0.0;
    }
    return hits / voiced;
}

void expect_at_least(const std::string& what, double reached, double floor) {
    std::cout << what << ": " << reached << ", floor " << floor << '\n';
    EXPECT_GE(reached, floor) << what;
}

/// Two voices, by their pitch in Hz.
class ShippedData : public testing::TestWithParam<double> {
protected:
    const spoken_words said = words(length, GetParam(), 3);
};

INSTANTIATE_TEST_SUITE_P(Voices, ShippedData, testing::Values(115.0, 205.0),
                         [](const auto& hz) { return std::to_string(static_cast<int>(hz.param)) + "Hz"; });

TEST_P(ShippedData, CleansWords) {
    const samples noisy = mixed(said.samples, 5.0);
    expect_at_least("gain in SI-SDR, dB",
                    si_sdr(said.samples, clean(noisy).cleaned) - si_sdr(said.samples, noisy), least_gain);
}

TEST_P(ShippedData, LeavesCleanWordsAsTheyAre) {
    const samples cleaned = clean(said.samples).cleaned;
    const double change = decibels(power(cleaned) / power(said.samples));
    expect_at_least("loss of level, dB below zero", -std::abs(change), -largest_change_of_level);
    expect_at_least("SI-SDR of clean words, dB", si_sdr(said.samples, cleaned), least_quality);
}

TEST_P(ShippedData, HearsVoiceAndPitchInNoise) {
    const outcome heard = clean(mixed(said.samples, 10.0));
    expect_at_least("voiced frames heard",
                    share_of_voiced(said, [&](std::size_t i) { return heard.voice[i] > 0.85F; }),
                    least_voiced);
    expect_at_least(
        "pitch found",
        share_of_voiced(said,
                        [&](std::size_t i) { return std::abs(heard.pitch[i] / said.pitch[i] - 1.0) < 0.05; }),
        least_pitch);
}

TEST(ShippedDataWithoutWords, TakesNoiseAwayAndHearsNoVoiceInIt) {
    const samples alone = fan(1e-3, 7);
    const outcome heard = clean(alone);
    expect_at_least("attenuation, dB", decibels(power(alone, second) / power(heard.cleaned, second)),
                    least_attenuation);
    const auto first = heard.voice.begin() + second / frame;
    const auto quiet = std::count_if(first, heard.voice.end(), [](float voice) { return voice < 0.025F; });
    expect_at_least("frames without voice",
                    static_cast<double>(quiet) / static_cast<double>(heard.voice.end() - first),
                    least_unvoiced);
}

} // namespace
