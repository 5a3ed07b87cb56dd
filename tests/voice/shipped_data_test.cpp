// What the shipped data sets do to synthesised words and noise: well under what they reach on recordings, so that a
// broken table or a set in another's place is found.
#include "kit/audio.h"
#include "kit/words.h"
#include "voice/neural/anc.h"
#include "voice/recurrent/rnn.h"

#include <iostream>
#include <string>

namespace {

using namespace test_kit;

constexpr size_t frame = 480;
constexpr size_t second = 48000;
constexpr size_t latency = 960;
constexpr size_t length = 6 * second;

double decibels(double power_ratio) {
    return 10.0 * std::log10(power_ratio);
}

/// Scale-invariant signal to distortion ratio in dB.
double si_sdr(const samples& reference, const samples& estimate) {
    const auto count = static_cast<double>(reference.size());
    const double product =
        std::inner_product(reference.begin(), reference.end(), estimate.begin(), 0.0) / count;
    const double target = product * product / power(reference);
    return decibels(target / (power(estimate) - target));
}

/// The sound of a fan: what is left of white noise above each octave falls by 6 dB.
samples fan(double wanted_power, std::uint32_t seed) {
    samples x = noise(length, seed);
    float low = 0.0F;
    for (float& sample : x)
        sample = low += 0.05F * (sample - low);
    return scaled(x, static_cast<float>(std::sqrt(wanted_power / power(x))));
}

samples mixed(const samples& voice, double snr_db) {
    return sum(fan(power(voice) * std::pow(10.0, -snr_db / 10.0), 5), voice);
}

struct outcome {
    samples cleaned; // in step with the input
    samples voice;
    std::vector<int> pitch; // both of the input's frames
};

/// A talker's road with noise cancellation on.
outcome clean(samples x) {
    quenlis_anc canceller(48000, 1, frame);
    quenlis_rnn denoiser(frame, 1);
    outcome result;
    x.resize(x.size() + latency);
    for (size_t start = 0; start < x.size(); start += frame) {
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
    for (size_t i = 0; i < said.pitch.size(); ++i) {
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
                    si_sdr(said.samples, clean(noisy).cleaned) - si_sdr(said.samples, noisy), 2.0);
}

TEST_P(ShippedData, LeavesCleanWordsAsTheyAre) {
    const samples cleaned = clean(said.samples).cleaned;
    const double change = decibels(power(cleaned) / power(said.samples));
    expect_at_least("loss of level, dB below zero", -std::abs(change), -3.0);
    expect_at_least("SI-SDR of clean words, dB", si_sdr(said.samples, cleaned), 7.0);
}

TEST_P(ShippedData, HearsVoiceAndPitchInNoise) {
    const outcome heard = clean(mixed(said.samples, 10.0));
    const auto is_heard = [&](size_t i) { return heard.voice[i] > 0.85F; };
    const auto is_in_pitch = [&](size_t i) { return std::abs(heard.pitch[i] / said.pitch[i] - 1.0) < 0.05; };
    expect_at_least("share of voiced frames heard", share_of_voiced(said, is_heard), 0.8);
    expect_at_least("share of pitches found within 5%", share_of_voiced(said, is_in_pitch), 0.8);
}

TEST(ShippedDataWithoutWords, TakesNoiseAwayAndHearsNoVoiceInIt) {
    const samples alone = fan(1e-3, 7);
    const outcome heard = clean(alone);
    const samples cleaned = part(heard.cleaned, second, length);
    expect_at_least("attenuation, dB", decibels(power(part(alone, second, length)) / power(cleaned)), 25.0);
    const samples voice = part(heard.voice, second / frame, heard.voice.size());
    const auto quiet = std::count_if(voice.begin(), voice.end(), [](float v) { return v < 0.025F; });
    expect_at_least("share of frames without voice",
                    static_cast<double>(quiet) / static_cast<double>(voice.size()), 0.8);
}

} // namespace
